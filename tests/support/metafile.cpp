#include "tests/support/metafile.h"

#include "tests/support/builder.h"

namespace test {

std::string Element(int elementClass, int id, const std::string& parameters) {
  std::string bytes;
  const auto head = static_cast<uint64_t>(elementClass << 12 | id << 5);
  if (parameters.size() < 31) {
    bytes = Big(head | parameters.size(), 2) + parameters;
  } else {
    bytes = Big(head | 31, 2) + Big(parameters.size(), 2) + parameters;
  }
  return parameters.size() % 2 != 0 ? bytes + '\0' : bytes;
}

std::string I(std::initializer_list<int> numbers) {
  std::string bytes;
  for (int number : numbers) bytes += Big(static_cast<uint16_t>(number), 2);
  return bytes;
}

std::string S(const std::string& text) { return static_cast<char>(text.size()) + text; }

std::string Metafile(const std::string& body, const std::string& descriptors, const std::string& extent) {
  return Element(0, 1, S("test")) + Element(1, 1, I({1})) + descriptors + Element(0, 3, S("picture")) +
         Element(2, 2, I({1})) + Element(2, 6, extent) + Element(0, 4, "") + body + Element(0, 5, "") +
         Element(0, 2, "");
}

}  // namespace test
