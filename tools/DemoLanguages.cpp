// Demo section: a failure of the foundation section again, and the display
// names of a query document, with the program's message locale set to German.

#include <stdlib.h>

#include <clocale>
#include <memory>
#include <pugixml.hpp>
#include <string>

#include "orvmysql/Language.h"
#include "orvmysql/orvmysql.h"
#include "query/EntityFilters.h"
#include "tools/Demo.h"

namespace orvdemo {

namespace {

using namespace orvmysql;

// Chooses German as a German program does: through its LC_MESSAGES locale.
// A machine without that locale gets German through the library's own call.
void ChooseGerman(std::ostream& out) {
  for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE"}) {
    if (std::setlocale(LC_MESSAGES, name) != nullptr) {
      out << "The program sets its message locale: setlocale(LC_MESSAGES, \"" << name << "\")\n";
      return;
    }
  }
  SetLanguage("de_DE");
  out << "The locale de_DE.UTF-8 is not installed on this machine (scripts/install-deps.sh "
         "makes it);\nGerman is chosen with orvmysql::SetLanguage(\"de_DE\") instead.\n";
}

void ShowFailure(std::ostream& out, const std::string& what, const Error& e) {
  const std::string& text = e.Description();
  out << what << ": error " << e.Number() << ", " << text.substr(0, text.find(" => ")) << "\n";
}

}  // namespace

void DemoLanguages(CMYSqlDP& handler, std::ostream& out) {
  out << "\n== In German\n";
  // The demo runs from the build tree: the languages come from the sources.
  const char* data_dir = getenv("ORVMYSQL_DATA_DIR");
  if (data_dir == nullptr || *data_dir == '\0')
    setenv("ORVMYSQL_DATA_DIR", ORVMYSQL_SOURCE_DATA_DIR, 1);
  const std::string program_locale = std::setlocale(LC_MESSAGES, nullptr);
  out << "Installed languages:";
  for (const InstalledLanguage& language : InstalledLanguages()) {
    out << " " << language.locale << " (" << language.name << ")";
  }
  out << "\n";
  ChooseGerman(out);
  out << "Current language: " << CurrentLanguage() << "\n";

  try {
    GetNextID(*handler.Connection(), -99);  // the key failure of the foundation section
  } catch (const Error& e) {
    ShowFailure(out, "GetNextID(-99)", e);
  }
  std::shared_ptr<CAttributes> map;
  CQuery colour;
  colour.SetCriteria(std::make_shared<CConditionExpression>(dloAnd));
  colour.Criteria()->Conditions()->Add(std::make_shared<CCondition>("Farbe", dcoEqualto, "rot"));
  try {
    ParseWorkitemFilter(colour.ToXML(), map);
  } catch (const Error& e) {
    ShowFailure(out, "A work-item filter on \"Farbe\"", e);
  }

  // The display names of a work-item filter, added to its query document.
  auto criteria = std::make_shared<CConditionExpression>(dloAnd);
  criteria->Conditions()->Add(std::make_shared<CCondition>("State", dcoContains, 0x4000000));
  criteria->Conditions()->Add(std::make_shared<CCondition>("Priority", dcoGreaterThanEqualTo, 2));
  criteria->Conditions()->Add(std::make_shared<CCondition>("CreatedOn", dcoLastXDays, 7));
  CQuery query;
  query.SetCriteria(criteria);
  query.OrderBy()->Add(std::make_shared<COrderExpression>("Priority", dsDescending));
  const std::string german = TranslateDisplayNames(query.ToXML());
  pugi::xml_document doc;
  doc.load_string(german.c_str());
  out << "A work-item filter with German display names (TranslateDisplayNames); its first "
         "condition:\n  ";
  doc.select_node("//condition").node().print(out, "", pugi::format_raw);
  out << "\nRead out in German:\n";
  const std::string joiner = doc.select_node("//conditionexpression")
                                 .node()
                                 .attribute("logicaloperatordisplayname")
                                 .value();
  bool first = true;
  for (const auto& found : doc.select_nodes("//condition")) {
    const pugi::xml_node c = found.node();
    const std::string value = c.attribute("valuedisplayname").value();
    out << "  " << (first ? "" : joiner + " ") << c.attribute("attributedisplayname").value() << " "
        << c.attribute("operatordisplayname").value() << " "
        << (value.empty() ? c.child_value() : value) << "\n";
    first = false;
  }
  const pugi::xml_node sort = doc.select_node("//sort").node();
  out << "  ordered by " << sort.attribute("attributedisplayname").value() << ", "
      << sort.attribute("sortorderdisplayname").value() << "\n";

  std::setlocale(LC_MESSAGES, program_locale.c_str());
  SetLanguage("");
  try {
    GetNextID(*handler.Connection(), -99);
  } catch (const Error& e) {
    ShowFailure(out, "Back in the program's own locale, GetNextID(-99)", e);
  }
}

}  // namespace orvdemo
