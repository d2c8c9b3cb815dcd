// Libraries and plugins that are loaded when they are first used: what few commands need costs the
// others nothing.
#pragma once

namespace media {

/// A library by its soname, which stays loaded; null where it is not there, or where there is not enough
/// memory to set it up.
void* LoadLibrary(const char* soname);
/// A plugin by its file's name. It lies in the folder of this version beside the library that asks, or
/// where the libraries of the program that asks are installed, and nowhere else.
void* LoadPlugin(const char* name);
/// A function of one; null where it has none of that name.
void* FunctionOf(void* library, const char* name);

/// Sets a pointer to a function; false where there is none.
template <class Function>
bool Resolve(void* library, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(FunctionOf(library, name));
  return function != nullptr;
}

}  // namespace media
