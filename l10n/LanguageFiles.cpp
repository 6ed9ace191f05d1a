#include "l10n/LanguageFiles.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <sstream>
#include <unordered_set>

#include "orvmysql/Error.h"
#include "query/TextUtil.h"

namespace orvmysql::detail {

XmlFile::XmlFile(std::string_view kind, std::string path) : kind_(kind), path_(std::move(path)) {
  std::ifstream in(path_, std::ios::binary);
  if (!in) Fail(std::string("cannot be read (") + std::strerror(errno) + ")");
  std::ostringstream text;
  text << in.rdbuf();
  text_ = std::move(text).str();
  const pugi::xml_parse_result parsed =
      doc_.load_buffer(text_.data(), text_.size(), pugi::parse_default, pugi::encoding_utf8);
  if (!parsed) {
    ThrowRuntimeError(kErrInvalidCall, kind_ + " '" + path_ +
                                           "': not well-formed XML: " + parsed.description() +
                                           " (" + LineAndColumn(text_, parsed.offset) + ")");
  }
}

void XmlFile::Fail(const std::string& what, pugi::xml_node at) const {
  std::string text = kind_ + " '" + path_ + "': " + what;
  if (at) text += " (" + LineAndColumn(text_, at.offset_debug()) + ")";
  ThrowRuntimeError(kErrInvalidCall, text);
}

std::string_view LocalName(pugi::xml_node node) {
  std::string_view name = node.name();
  const std::size_t colon = name.rfind(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

namespace {

// The text of an element and of all elements inside it, so that inline
// markup around parts of a translation keeps its words.
void AppendText(pugi::xml_node node, std::string& out) {
  for (pugi::xml_node child : node.children()) {
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
      out += child.value();
    } else if (child.type() == pugi::node_element) {
      AppendText(child, out);
    }
  }
}

struct Units {
  std::unordered_map<int32_t, std::string> texts;
  std::unordered_set<int32_t> seen;
};

void ReadUnits(const XmlFile& file, pugi::xml_node node, Units& units) {
  for (pugi::xml_node child : node.children()) {
    if (child.type() != pugi::node_element) continue;
    if (LocalName(child) != "trans-unit") {
      ReadUnits(file, child, units);
      continue;
    }
    const std::string_view id = TrimBlanks(child.attribute("id").value());
    int32_t number = 0;
    auto [end, ec] = std::from_chars(id.data(), id.data() + id.size(), number);
    if (id.empty() || ec != std::errc() || end != id.data() + id.size()) {
      file.Fail("the unit id '" + std::string(id) + "' is not a message number", child);
    }
    pugi::xml_node target;
    for (pugi::xml_node part : child.children()) {
      if (part.type() == pugi::node_element && LocalName(part) == "target") target = part;
    }
    std::string text;
    const std::string_view state = target.attribute("state").value();
    if (state != "new" && state != "needs-translation") AppendText(target, text);
    if (!units.seen.insert(number).second) {
      file.Fail("the message number " + std::to_string(number) + " is given twice", child);
    }
    if (!text.empty()) units.texts.emplace(number, std::move(text));
  }
}

}  // namespace

std::unordered_map<int32_t, std::string> ReadMessageCatalog(const std::string& path) {
  XmlFile file("message catalog", path);
  if (LocalName(file.Root()) != "xliff") {
    file.Fail("the root element is '" + std::string(file.Root().name()) + "', not 'xliff'",
              file.Root());
  }
  Units units;
  ReadUnits(file, file.Root(), units);
  return std::move(units.texts);
}

}  // namespace orvmysql::detail
