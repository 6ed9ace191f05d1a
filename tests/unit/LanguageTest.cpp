// Messages in the installed languages: the shipped catalogs, choosing the
// language, fallback to the built-in table, and broken language files.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <atomic>
#include <clocale>
#include <map>
#include <regex>
#include <set>
#include <thread>
#include <vector>

#include "LanguageTestSupport.h"
#include "access/Connection.h"
#include "access/ErrorHandling.h"
#include "query/EntityFilters.h"
#include "support/ErrorCapture.h"

namespace orvtest {
namespace {

using namespace orvmysql;
using ::testing::HasSubstr;

std::set<std::string> Placeholders(const std::string& text) {
  std::set<std::string> found;
  static const std::regex placeholder("%[0-9]");
  for (std::sregex_iterator it(text.begin(), text.end(), placeholder), end; it != end; ++it) {
    found.insert(it->str());
  }
  return found;
}

using Languages = LanguageFixture;

TEST_F(Languages, ShippedLanguagesAreListedWithTheirFiles) {
  const std::vector<InstalledLanguage> list = InstalledLanguages();
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[0].locale, "en_US");
  EXPECT_EQ(list[1].locale, "de_DE");
  EXPECT_EQ(list[1].name, "Deutsch");
  EXPECT_EQ(list[2].locale, "fr_FR");
  for (const InstalledLanguage& language : list) {
    EXPECT_TRUE(std::filesystem::is_regular_file(language.catalog)) << language.catalog;
    EXPECT_TRUE(std::filesystem::is_regular_file(language.stylesheet)) << language.stylesheet;
  }
}

// Every catalog translates every number of the built-in table from the
// current English text and keeps its placeholders; English is the table.
TEST_F(Languages, EveryCatalogTranslatesTheWholeTableKeepingPlaceholders) {
  for (const InstalledLanguage& language : InstalledLanguages()) {
    SCOPED_TRACE(language.locale);
    pugi::xml_document catalog;
    ASSERT_TRUE(catalog.load_file(language.catalog.c_str()));
    std::map<int32_t, std::string> sources;
    for (const auto& unit : catalog.select_nodes("//trans-unit")) {
      sources[unit.node().attribute("id").as_int()] = unit.node().child_value("source");
    }
    for (const detail::Message& m : detail::BuiltInMessages()) {
      SCOPED_TRACE(m.number);
      EXPECT_EQ(sources[m.number], m.text) << "the unit's source is not the built-in text";
      const std::string text = MessageText(m.number, language.locale);
      EXPECT_EQ(Placeholders(text), Placeholders(m.text)) << text;
      if (language.locale == "en_US") {
        EXPECT_EQ(text, m.text);
      } else {
        EXPECT_NE(text, m.text) << "not translated";
      }
    }
  }
}

TEST_F(Languages, RaisedErrorsComeInTheChosenLanguageWithPlaceholdersFilled) {
  SetLanguage("de-DE");
  EXPECT_EQ(CurrentLanguage(), "de_DE");
  const Error german = Raised([] {
    detail::RaiseError(kMsgInvalidOperator, "here", {"dcoContains", "Status"});
  });
  EXPECT_EQ(german.Description(),
            "Der Operator 'dcoContains' ist für das Attribut 'Status' nicht "
            "zulässig.");
  EXPECT_EQ(static_cast<uint32_t>(german.Number()), 0x80042003u);
  EXPECT_THAT(german.Source(), HasSubstr("[Err:8195]"));

  // A real failure: the work-item filter naming an attribute it does not have.
  SetLanguage("fr");
  std::shared_ptr<CAttributes> map;
  const Error french = Raised([&] {
    ParseWorkitemFilter(
        "<query><criteria><conditionexpression logicaloperator='dloAnd'><conditions>"
        "<condition attributename='Colour' operator='dcoEqualto'>red</condition>"
        "</conditions></conditionexpression></criteria></query>",
        map);
  });
  EXPECT_EQ(french.Number(), kObjectErrorBase | kMsgUnknownAttribute);
  EXPECT_THAT(french.Description(), ::testing::StartsWith("Attribut inconnu 'Colour'. => "));

  SetLanguage("C");
  EXPECT_EQ(CurrentLanguage(), "");
  EXPECT_EQ(Raised([] { detail::RaiseError(kMsgPrimaryKey, "here"); }).Description(),
            "Error while generating primary key.");
}

TEST_F(Languages, LocalesMatchByLocaleThenByLanguage) {
  SetLanguage("de_AT.UTF-8@euro");
  EXPECT_EQ(CurrentLanguage(), "de_DE");
  SetLanguage("FR_fr");
  EXPECT_EQ(CurrentLanguage(), "fr_FR");
  const Error none = Raised([] { SetLanguage("ja_JP"); });
  EXPECT_EQ(none.Number(), kErrInvalidCall);
  EXPECT_THAT(none.Description(),
              HasSubstr("no installed language matches the locale 'ja_JP' (installed: en_US, "
                        "de_DE, fr_FR)"));
  EXPECT_EQ(CurrentLanguage(), "fr_FR") << "a refused choice keeps the current language";
  EXPECT_EQ(Raised([] { MessageText(8194, "ja"); }).Number(), kErrInvalidCall);
}

TEST_F(Languages, ProgramMessageLocaleChoosesUnlessALanguageIsSet) {
  ASSERT_NE(std::setlocale(LC_MESSAGES, "C.UTF-8"), nullptr);
  EXPECT_EQ(CurrentLanguage(), "");
  EXPECT_EQ(MessageText(8252), "Invalid number.");
  if (std::setlocale(LC_MESSAGES, "de_DE.UTF-8") == nullptr) {
    GTEST_SKIP() << "the locale de_DE.UTF-8 is not installed (scripts/install-deps.sh makes it)";
  }
  EXPECT_EQ(CurrentLanguage(), "de_DE");
  EXPECT_EQ(MessageText(8252), "Ungültige Zahl.");
  SetLanguage("fr_FR");
  EXPECT_EQ(MessageText(8252), "Nombre non valide.");
  SetLanguage("");
  EXPECT_EQ(MessageText(8252), "Ungültige Zahl.");
}

TEST_F(Languages, NumbersACatalogLacksComeFromTheBuiltInTable) {
  const auto dir = ScratchDir();
  WriteFile(dir / "Languages.xml", GermanOnly("de.xlf", "none.xsl"));
  WriteFile(dir / "de.xlf",
            "<xliff version='1.2'><file><body><group>"
            "<trans-unit id='8194'><target>Unbekannt: '%0'</target></trans-unit></group>"
            "<trans-unit id='8195'><target state='needs-translation'>Operator?</target>"
            "</trans-unit>"
            "<trans-unit id='8196'><target></target></trans-unit>"
            "<trans-unit id='99999'><target>Nur hier.</target></trans-unit>"
            "</body></file></xliff>");
  UseDataDir(dir);
  SetLanguage("de");
  EXPECT_EQ(Raised([] { detail::RaiseError(8194, "x", {"Farbe"}); }).Description(),
            "Unbekannt: 'Farbe'");
  EXPECT_EQ(Raised([] {
              detail::RaiseError(8195, "x", {"a", "b"});
            }).Description(),
            "Operator 'a' is not a valid operator for the attribute 'b'.");
  EXPECT_EQ(MessageText(8196), "Error while generating primary key.");
  EXPECT_EQ(MessageText(99999), "Nur hier.");
  EXPECT_EQ(Raised([] { MessageText(12345); }).Number(), kErrResourceNotFound);
}

TEST_F(Languages, HostLookupComesBeforeTheCatalog) {
  SetLanguage("de");
  SetMessageLookup(
      [](int32_t n) { return n == kMsgPrimaryKey ? std::string("host text") : std::string(); });
  EXPECT_EQ(MessageText(kMsgPrimaryKey), "host text");
  EXPECT_EQ(MessageText(kMsgPrimaryKey, "fr"), "host text");
  EXPECT_EQ(MessageText(kMsgUnknownAttribute), "Unbekanntes Attribut '%0'.");
}

// The connect failure keeps the built-in text whatever the language; the
// catalogs still translate it for hosts that show it themselves.
TEST_F(Languages, ConnectFailureTextIsTheBuiltInOne) {
  SetLanguage("de");
  auto connection = std::make_shared<CConnection>();
  connection->Init(CDPConnector("127.0.0.1", "", "root", "", "1"));  // nothing listens on port 1
  const Error e = Raised([&] { connection->Execute("SELECT 1"); });
  EXPECT_EQ(e.Number(), kErrConnectFailed);
  EXPECT_THAT(e.Description(), HasSubstr("\r\nFailed to connect to data provider. (Reason: "));
  EXPECT_EQ(MessageText(kMsgConnectFailed),
            "Die Verbindung zum Datenanbieter ist fehlgeschlagen. (Ursache: %0)");
}

TEST_F(Languages, MissingOrMalformedLanguagesFileIsReportedAndTheBuiltInTextsServe) {
  SetLanguage("de");  // stays chosen while the data directory changes below
  const auto missing = ScratchDir() / "nothing-here";
  UseDataDir(missing.string());
  const Error e = Raised([] { SetLanguage("de"); });
  EXPECT_EQ(e.Number(), kErrInvalidCall);
  EXPECT_THAT(e.Description(), HasSubstr("languages file '" + (missing / "Languages.xml").string() +
                                         "': cannot be read (No such file or directory)"));
  EXPECT_THAT(e.Source(), HasSubstr("Language:SetLanguage Ln "));
  EXPECT_EQ(Raised([] { InstalledLanguages(); }).Description(), e.Description());
  EXPECT_EQ(Raised([] { detail::RaiseError(kMsgPrimaryKey, "x"); }).Description(),
            "Error while generating primary key.");

  const struct {
    const char* text;
    const char* what;
  } cases[] = {
      {"<languages>\n  <language locale='de_DE'", "not well-formed XML"},
      {"<languages>\n  <language locale='de_DE' name='Deutsch' stylesheet='de.xsl'/></languages>",
       "the language lacks its catalog (line 2, column 4)"},
      {"<catalogs/>", "the root element is 'catalogs', not 'languages'"},
      {"<languages><language locale='de_DE' name='a' catalog='a' stylesheet='a'/>\n"
       "<language locale='DE_de' name='b' catalog='b' stylesheet='b'/></languages>",
       "the locale 'DE_de' is listed twice (line 2, column 2)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const auto dir = ScratchDir();
    WriteFile(dir / "Languages.xml", c.text);
    UseDataDir(dir);
    EXPECT_THAT(Raised([] { InstalledLanguages(); }).Description(), HasSubstr(c.what));
    EXPECT_EQ(MessageText(kMsgPrimaryKey), "Error while generating primary key.");
  }
}

TEST_F(Languages, BrokenCatalogIsReportedWhereItIsWrong) {
  const struct {
    const char* text;
    const char* what;
  } cases[] = {
      {"<xliff>\n<file><body><trans-unit id='8194'><target>x</target>", "not well-formed XML"},
      {"<tmx/>", "the root element is 'tmx', not 'xliff'"},
      {"<xliff>\n <trans-unit id='81x'/></xliff>",
       "the unit id '81x' is not a message number (line 2, column 3)"},
      {"<xliff><trans-unit id='8194'/>\n<trans-unit id=' 8194 '/></xliff>",
       "the message number 8194 is given twice (line 2, column 2)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const auto dir = ScratchDir();
    WriteFile(dir / "Languages.xml", GermanOnly("de.xlf", "de.xsl"));
    WriteFile(dir / "de.xlf", c.text);
    UseDataDir(dir);
    const Error e = Raised([] { SetLanguage("de_DE"); });
    EXPECT_EQ(e.Number(), kErrInvalidCall);
    EXPECT_THAT(e.Description(), HasSubstr("message catalog '" + (dir / "de.xlf").string() + "'"));
    EXPECT_THAT(e.Description(), HasSubstr(c.what));
    EXPECT_EQ(CurrentLanguage(), "") << "the refused language did not become current";
  }
}

// A language that broke after it was chosen: raising an error still works
// (in English), and the explicit call says what is wrong, the same each time.
TEST_F(Languages, MessageLookupNeverFailsOnABrokenCatalog) {
  SetLanguage("de_DE");
  const auto dir = ScratchDir();
  WriteFile(dir / "Languages.xml", GermanOnly("de.xlf", "de.xsl"));
  WriteFile(dir / "de.xlf", "<xliff><trans-unit");
  UseDataDir(dir);
  const Error raised = Raised([] { detail::RaiseError(kMsgInvalidOperator, "x", {"a", "b"}); });
  EXPECT_EQ(raised.Number(), kObjectErrorBase | kMsgInvalidOperator);
  EXPECT_EQ(raised.Description(), "Operator 'a' is not a valid operator for the attribute 'b'.");
  const Error first = Raised([] { CurrentLanguage(); });
  EXPECT_THAT(first.Description(), HasSubstr("message catalog"));
  EXPECT_EQ(Raised([] { CurrentLanguage(); }).Description(), first.Description());
}

TEST_F(Languages, LookupsOnSeveralThreadsAgree) {
  const std::pair<const char*, const char*> expected[] = {
      {"de", "Ungültige Zahl."}, {"fr", "Nombre non valide."}, {"en", "Invalid number."}};
  std::vector<std::thread> threads;
  std::atomic<int> wrong = 0;
  for (int t = 0; t < 6; ++t) {
    threads.emplace_back([&, t] {
      const auto& [locale, text] = expected[t % 3];
      for (int i = 0; i < 200; ++i) {
        if (MessageText(8252, locale) != text) ++wrong;
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace orvtest
