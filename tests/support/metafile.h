// Metafiles written by hand.
#pragma once

#include <initializer_list>
#include <string>

namespace test {

/// An element: its head, its parameters, padded to a word.
std::string Element(int elementClass, int id, const std::string& parameters);
/// 16-bit numbers.
std::string I(std::initializer_list<int> numbers);
/// A counted string.
std::string S(const std::string& text);
/// A picture of direct colours whose extent is 100 x 100 units, y upwards.
std::string Metafile(const std::string& body, const std::string& descriptors = "",
                     const std::string& extent = I({0, 0, 100, 100}));

}  // namespace test
