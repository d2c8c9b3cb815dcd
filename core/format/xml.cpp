#include "core/format/xml.h"

#include <memory>

#include <expat.h>

namespace core {
namespace {

using ParserPtr = std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)>;

ParserPtr MakeParser() {
  XML_Parser parser = XML_ParserCreate(nullptr);
  if (parser == nullptr) throw std::bad_alloc();
  // A document that declares entities is refused: they may grow without bound.
  XML_SetEntityDeclHandler(
      parser, [](void* user, const XML_Char*, int, const XML_Char*, int, const XML_Char*, const XML_Char*,
                 const XML_Char*,
                 const XML_Char*) { (void)XML_StopParser(static_cast<XML_Parser>(user), XML_FALSE); });
  XML_UseParserAsHandlerArg(parser);
  return {parser, &XML_ParserFree};
}

std::string WordsOf(XML_Parser parser) {
  const XML_Error error = XML_GetErrorCode(parser);
  return error == XML_ERROR_ABORTED ? "it declares entities" : XML_ErrorString(error);
}

// What is written while a document is parsed.
struct Indenter {
  std::string text;
  size_t depth = 0;
  bool isInside = false;  // text stands in front, which stays on its line

  void NewLine() {
    if (!text.empty() && !isInside) text += "\n" + std::string(2 * depth, ' ');
    isInside = false;
  }
  static std::string Escaped(std::string_view raw) {
    std::string escaped;
    for (const char c : raw)
      escaped += c == '<' ? "&lt;" : c == '&' ? "&amp;" : c == '"' ? "&quot;" : std::string(1, c);
    return escaped;
  }
};

void Begin(void* user, const XML_Char* name, const XML_Char** attributes) {
  auto& indenter = *static_cast<Indenter*>(user);
  indenter.NewLine();
  indenter.text += std::string("<") + name;
  for (; *attributes != nullptr; attributes += 2)
    indenter.text += std::string(" ") + attributes[0] + "=\"" + Indenter::Escaped(attributes[1]) + "\"";
  indenter.text += ">";
  ++indenter.depth;
}
void End(void* user, const XML_Char* name) {
  auto& indenter = *static_cast<Indenter*>(user);
  --indenter.depth;
  const std::string open = std::string("<") + name + ">";
  const bool isEmpty = !indenter.isInside && indenter.text.size() >= open.size() &&
                       indenter.text.compare(indenter.text.size() - open.size(), open.size(), open) == 0;
  if (isEmpty) {
    indenter.text.insert(indenter.text.size() - 1, "/");
    return;
  }
  indenter.NewLine();
  indenter.text += std::string("</") + name + ">";
}
void Characters(void* user, const XML_Char* raw, int count) {
  auto& indenter = *static_cast<Indenter*>(user);
  const std::string_view text(raw, static_cast<size_t>(count));
  if (!indenter.isInside && text.find_first_not_of(" \t\r\n") == std::string_view::npos) return;
  indenter.text += Indenter::Escaped(text);
  indenter.isInside = true;
}

}  // namespace

XmlFault FindXmlFault(const PartBytes& bytes) {
  constexpr uint64_t kPiece = 64 << 10;
  const ParserPtr parser = MakeParser();
  for (uint64_t at = 0; at < bytes.Size() || at == 0; at += kPiece) {
    const std::string piece = bytes.Piece(at, kPiece);
    const bool isLast = at + kPiece >= bytes.Size();
    if (XML_Parse(parser.get(), piece.data(), static_cast<int>(piece.size()), isLast) == XML_STATUS_OK)
      continue;
    return {static_cast<uint64_t>(std::max<XML_Index>(0, XML_GetCurrentByteIndex(parser.get()))),
            WordsOf(parser.get())};
  }
  return {};
}

std::string IndentedXml(const std::string& xml) {
  if (xml.find("<!ENTITY") != std::string::npos) return "";
  const ParserPtr parser(XML_ParserCreate(nullptr), &XML_ParserFree);
  if (parser == nullptr) throw std::bad_alloc();
  Indenter indenter;
  XML_SetUserData(parser.get(), &indenter);
  XML_SetElementHandler(parser.get(), Begin, End);
  XML_SetCharacterDataHandler(parser.get(), Characters);
  if (XML_Parse(parser.get(), xml.data(), static_cast<int>(xml.size()), 1) != XML_STATUS_OK) return "";
  return indenter.text + "\n";
}

}  // namespace core
