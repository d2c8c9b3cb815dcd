// A reader that shares no code with the module: walks a file's header and segments and checks that
// everything lies where the header says.
#pragma once

#include <string>

namespace test {

/// An empty text when the lengths add up to FL, HL is where the first segment starts and every segment
/// begins with its mark; otherwise what is wrong.
std::string CheckLayout(const std::string& file);

/// COMRAT of the first image; empty when there is none.
std::string FirstCompressionRate(const std::string& file);
/// The file with another COMRAT in its first image.
std::string WithCompressionRate(const std::string& file, const std::string& rate);

}  // namespace test
