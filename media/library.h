// Libraries and plugins that are loaded when they are first used: what few commands need costs the
// others nothing.
#pragma once

#include <cstddef>

namespace media {

/// What libraries of C++ take while they are set up, which ends the program where it is not there.
constexpr size_t kSetUpBytes = 64 << 20;
/// A library by its soname or path, which stays loaded; null where it is not there. Throws std::bad_alloc
/// where there is less memory than it takes to set it up.
void* LoadLibrary(const char* soname, size_t setUpBytes = kSetUpBytes);
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
