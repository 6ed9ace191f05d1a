// Display names: the shipped stylesheets applied to real query documents, and
// stylesheets or documents that fail.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pugixml.hpp>

#include "LanguageTestSupport.h"
#include "QueryTestSupport.h"
#include "query/EntityFilters.h"
#include "query/Operators.h"

namespace orvtest {
namespace {

using ::testing::HasSubstr;
using DisplayNames = LanguageFixture;

constexpr int32_t kOpen = 0x4000000;
constexpr int32_t kPaused = 0x20000000;

// ann's open work items that are urgent or recent, most urgent first.
CQuery WorkQuery() {
  CQuery query;
  query.SetEntityName("tblWorkitems");
  query.SetCriteria(Group(
      dloAnd, {Cond("ResourceID", dcoEqualto, "ann"), Cond("State", dcoContains, kOpen)},
      {Group(dloOr,
             {Cond("Priority", dcoGreaterThanEqualTo, 2), Cond("CreatedOn", dcoLastXDays, 7)})}));
  query.OrderBy()->Add(std::make_shared<COrderExpression>("Priority", dsDescending));
  return query;
}

pugi::xml_document Parse(const std::string& xml) {
  pugi::xml_document doc;
  EXPECT_TRUE(doc.load_string(xml.c_str())) << xml;
  return doc;
}

std::string Attr(const pugi::xml_document& doc, const char* xpath, const char* name) {
  return doc.select_node(xpath).node().attribute(name).value();
}

TEST_F(DisplayNames, GermanNamesAreAddedBesideTheQuerysOwn) {
  const CQuery query = WorkQuery();
  const std::string xml = query.ToXML();
  const std::string german = TranslateDisplayNames(xml, "de_DE");
  const pugi::xml_document doc = Parse(german);

  EXPECT_EQ(Attr(doc, "//condition[@attributename='ResourceID']", "attributedisplayname"),
            "Ressourcen-ID");
  EXPECT_EQ(Attr(doc, "//condition[@attributename='ResourceID']", "operatordisplayname"),
            "ist gleich");
  EXPECT_EQ(Attr(doc, "//condition[@attributename='State']", "attributedisplayname"), "Status");
  EXPECT_EQ(Attr(doc, "//condition[@attributename='State']", "operatordisplayname"), "enthält");
  EXPECT_EQ(Attr(doc, "//condition[@attributename='State']", "valuedisplayname"), "offen");
  EXPECT_EQ(Attr(doc, "//condition[@attributename='Priority']", "operatordisplayname"),
            "größer oder gleich");
  EXPECT_EQ(Attr(doc, "//condition[@attributename='CreatedOn']", "operatordisplayname"),
            "letzte X Tage");
  EXPECT_EQ(Attr(doc, "/query/criteria/conditionexpression", "logicaloperatordisplayname"), "und");
  EXPECT_EQ(Attr(doc, "//conditionexpressions/conditionexpression", "logicaloperatordisplayname"),
            "oder");
  EXPECT_EQ(Attr(doc, "//sort", "attributedisplayname"), "Priorität");
  EXPECT_EQ(Attr(doc, "//sort", "sortorderdisplayname"), "absteigend");
  EXPECT_EQ(doc.select_node("//condition[@attributename='ResourceID']").node().child_value(),
            std::string("ann"));

  // Still the same query for the engine.
  CQuery read_back;
  read_back.FromXML(german);
  EXPECT_EQ(read_back.ToXML(), xml);
  // Translating again changes nothing more.
  EXPECT_EQ(TranslateDisplayNames(german, "de_DE"), german);
}

TEST_F(DisplayNames, CurrentLanguageIsUsedAndNoLanguageLeavesTheDocument) {
  const std::string xml = WorkQuery().ToXML();
  EXPECT_EQ(TranslateDisplayNames(xml), xml);
  SetLanguage("fr");
  const pugi::xml_document doc = Parse(TranslateDisplayNames(xml));
  EXPECT_EQ(Attr(doc, "//condition[@attributename='State']", "attributedisplayname"), "État");
  EXPECT_EQ(Attr(doc, "//sort", "sortorderdisplayname"), "décroissant");
}

// Every attribute of the four filter maps and every operator has a name in
// every language; the English operator names are the built-in ones.
TEST_F(DisplayNames, EveryLanguageNamesEveryFilterAttributeAndOperator) {
  auto criteria = std::make_shared<CConditionExpression>(dloAnd);
  for (const auto& map : {WorkitemAttributes(), ProcInstanceAttributes(),
                          ActivityInstanceAttributes(), MessageAttributes()}) {
    for (const auto& attribute : *map) {
      criteria->Conditions()->Add(Cond(attribute->SchemaName(), dcoEqualto, "x"));
      if (attribute->Name() != attribute->SchemaName()) {
        criteria->Conditions()->Add(Cond(attribute->Name(), dcoEqualto, "x"));
      }
    }
  }
  for (const auto& op : detail::OperatorNames()) {
    criteria->Conditions()->Add(Cond("Subject", static_cast<ConditionOperatorEnum>(op.value)));
  }
  CQuery query;
  query.SetCriteria(criteria);
  const std::string xml = query.ToXML();

  for (const InstalledLanguage& language : InstalledLanguages()) {
    SCOPED_TRACE(language.locale);
    const pugi::xml_document doc = Parse(TranslateDisplayNames(xml, language.locale));
    int conditions = 0;
    for (const auto& found : doc.select_nodes("//condition")) {
      const pugi::xml_node condition = found.node();
      ++conditions;
      EXPECT_STRNE(condition.attribute("attributedisplayname").value(), "")
          << condition.attribute("attributename").value();
      EXPECT_STRNE(condition.attribute("operatordisplayname").value(), "")
          << condition.attribute("operator").value();
      if (language.locale == "en_US") {
        const int32_t op =
            *detail::ValueOf(detail::OperatorNames(), condition.attribute("operator").value());
        EXPECT_EQ(condition.attribute("operatordisplayname").value(),
                  detail::OperatorDisplayName(op));
      }
    }
    EXPECT_EQ(conditions, criteria->Conditions()->Count());
  }
}

TEST_F(DisplayNames, StateWordsAndOperatorNumbers) {
  const std::string xml =
      "<rows><row State='134217729'/><row state='134217730'/><row State='134217732'/>"
      "<row State='" +
      std::to_string(kOpen | kPaused) +
      "'/><row State='134217728'/>"
      "<row State='1073741824'/><row State='17'/><row State='open'/>"
      "<condition attributename='state' operator=' 9 '>67108864</condition></rows>";
  const pugi::xml_document doc = Parse(TranslateDisplayNames(xml, "de"));
  std::vector<std::string> words;
  for (const auto& row : doc.select_nodes("//row")) {
    words.push_back(row.node().attribute("statedisplayname").value());
  }
  EXPECT_THAT(words,
              ::testing::ElementsAre("abgeschlossen", "abgebrochen", "übersprungen",
                                     "offen, angehalten", "geschlossen", "angehalten", "", ""));
  EXPECT_EQ(Attr(doc, "//condition", "valuedisplayname"), "offen");
  EXPECT_EQ(Attr(doc, "//condition", "operatordisplayname"), "enthält");
  EXPECT_EQ(Attr(doc, "//condition", "attributedisplayname"), "Status");
}

TEST_F(DisplayNames, BadDocumentsAndFailingStylesheetsRaiseAndMessagesGoOn) {
  const Error bad = Raised([] { TranslateDisplayNames("<query><criteria>", "de"); });
  EXPECT_EQ(bad.Number(), kErrInvalidCall);
  EXPECT_THAT(bad.Description(), HasSubstr("document: not well-formed XML"));
  EXPECT_THAT(bad.Description(), HasSubstr("(line 1, column "));
  EXPECT_THAT(bad.Source(), HasSubstr("Language:TranslateDisplayNames Ln "));

  const auto dir = ScratchDir();
  const std::string catalog = kShippedData + "/messages/de.xlf";
  WriteFile(dir / "Languages.xml",
            "<languages>"
            "<language locale='de_DE' name='Deutsch' catalog='" +
                catalog +
                "' stylesheet='broken.xsl'/>"
                "<language locale='fr_FR' name='Français' catalog='" +
                catalog +
                "' stylesheet='stops.xsl'/>"
                "<language locale='it_IT' name='Italiano' catalog='" +
                catalog + "' stylesheet='missing.xsl'/></languages>");
  WriteFile(dir / "broken.xsl",
            "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>\n"
            "<xsl:template match='/'><xsl:value-of select='(('/></xsl:template>"
            "</xsl:stylesheet>");
  WriteFile(dir / "stops.xsl",
            "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
            "<xsl:template match='/'><xsl:message terminate='yes'>no display names for "
            "<xsl:value-of select='name(*)'/></xsl:message></xsl:template></xsl:stylesheet>");
  UseDataDir(dir);
  SetLanguage("de");

  const Error broken = Raised([] { TranslateDisplayNames("<query/>"); });
  EXPECT_EQ(broken.Number(), kErrInvalidCall);
  EXPECT_THAT(broken.Description(),
              HasSubstr("display-name stylesheet '" + (dir / "broken.xsl").string() + "'"));
  EXPECT_EQ(Raised([] { TranslateDisplayNames("<query/>"); }).Description(), broken.Description());

  const Error stops = Raised([] { TranslateDisplayNames("<query/>", "fr"); });
  EXPECT_THAT(stops.Description(), HasSubstr("failed: no display names for query"));

  EXPECT_THAT(Raised([] { TranslateDisplayNames("<query/>", "it"); }).Description(),
              HasSubstr("missing.xsl"));

  EXPECT_EQ(CurrentLanguage(), "de_DE");
  EXPECT_EQ(MessageText(kMsgPrimaryKey), "Fehler beim Erzeugen des Primärschlüssels.");
}

}  // namespace
}  // namespace orvtest
