#pragma once

// Reading the language files: the languages file and the message catalogs
// are XML read with pugixml. Every problem raises error 5 whose text names
// the kind of file, its path and, where there is one, the place in it.

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace orvmysql::detail {

class XmlFile {
 public:
  // Reads and parses the file; `kind` names it in errors ("message catalog").
  XmlFile(std::string_view kind, std::string path);

  pugi::xml_node Root() const { return doc_.document_element(); }
  const std::string& Path() const { return path_; }

  // Raises error 5 for a problem at a node of the file (null: no place).
  [[noreturn]] void Fail(const std::string& what, pugi::xml_node at = {}) const;

 private:
  std::string kind_;
  std::string path_;
  std::string text_;
  pugi::xml_document doc_;
};

// The element's name without a namespace prefix.
std::string_view LocalName(pugi::xml_node node);

// A message catalog: an XLIFF document whose units are identified by message
// number. Units without a target, with an empty one, or with a target still
// marked "new" or "needs-translation" are left out, so that the built-in
// text serves for them. Raises 5 for a document that is not XLIFF, a unit id
// that is not a message number, or an id given twice.
std::unordered_map<int32_t, std::string> ReadMessageCatalog(const std::string& path);

}  // namespace orvmysql::detail
