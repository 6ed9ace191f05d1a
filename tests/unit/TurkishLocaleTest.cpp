// Names fold only their ASCII letters, whatever the process locale. Under a
// Turkish locale the C library folds "I" to a dotless i and "i" to a dotted
// capital I, so folding through it loses every name with an I in it.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cctype>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "access/RSList.h"
#include "orvmysql/orvmysql.h"
#include "support/ScopedEnv.h"

using namespace orvmysql;

namespace {

namespace fs = std::filesystem;

constexpr const char* kTurkish = "tr_TR.UTF-8";

// Makes tr_TR.UTF-8 available: the system's when it is installed, else one
// compiled for this run into a temporary directory named by LOCPATH.
class TurkishLocale : public ::testing::Test {
 public:
  static void SetUpTestSuite() {
    if (CanSelect()) return;
    if (std::system("command -v localedef >/dev/null 2>&1") != 0 ||
        !fs::exists("/usr/share/i18n/locales/tr_TR")) {
      skip_reason_ =
          "tr_TR.UTF-8 is not installed and cannot be compiled here (needs localedef and the "
          "locale sources of the Debian package locales)";
      return;
    }
    char pattern[] = "/tmp/orvmysql-locale-XXXXXX";
    if (mkdtemp(pattern) == nullptr) {
      skip_reason_ = "cannot create a temporary directory for the locale";
      return;
    }
    locale_dir_ = pattern;
    const std::string command =
        "localedef -i tr_TR -f UTF-8 " + locale_dir_ + "/" + kTurkish + " >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0) {
      skip_reason_ = "localedef could not compile tr_TR.UTF-8";
      return;
    }
    locpath_.emplace("LOCPATH", locale_dir_.c_str());
    if (!CanSelect()) skip_reason_ = "tr_TR.UTF-8 was compiled but cannot be selected";
  }

  static void TearDownTestSuite() {
    locpath_.reset();
    if (locale_dir_.empty()) return;
    std::error_code ec;
    fs::remove_all(locale_dir_, ec);
  }

 protected:
  void SetUp() override {
    if (!skip_reason_.empty()) GTEST_SKIP() << skip_reason_;
    previous_ = std::setlocale(LC_ALL, nullptr);
    ASSERT_NE(std::setlocale(LC_ALL, kTurkish), nullptr);
    // Without this the locale folds like any other and the test proves nothing.
    ASSERT_NE(std::tolower('I'), 'i');
  }

  void TearDown() override {
    if (!previous_.empty()) std::setlocale(LC_ALL, previous_.c_str());
  }

 private:
  static bool CanSelect() {
    const std::string previous = std::setlocale(LC_ALL, nullptr);
    const bool selected = std::setlocale(LC_ALL, kTurkish) != nullptr;
    std::setlocale(LC_ALL, previous.c_str());
    return selected;
  }

  static inline std::string skip_reason_;
  static inline std::string locale_dir_;
  static inline std::optional<orvtest::ScopedEnv> locpath_;
  std::string previous_;
};

TEST_F(TurkishLocale, AttributesColumnsAndClassNamesMatchWithoutRegardToCase) {
  CAttributes attributes;
  attributes.Add("w", "WorkitemID", "Work item", kAttrPrimaryKey);
  ASSERT_NE(attributes.Item("workitemid"), nullptr);
  EXPECT_EQ(attributes.Item("WORKITEMID"), attributes.Item("WorkitemID"));

  EXPECT_NE(std::dynamic_pointer_cast<CCondition>(CreateObject("ORVMYSQL.CCONDITION")), nullptr);
  EXPECT_NE(std::dynamic_pointer_cast<CMYSqlDP>(CreateObject("orvmysql.cmysqldp")), nullptr);

  auto rows = MakeRowList({"WorkitemID"}, {{Variant(7)}});
  ASSERT_TRUE(rows->GetNext());
  EXPECT_EQ(rows->CurrentItem()->GetValue("workitemid").ToLong(), 7);
}

TEST_F(TurkishLocale, QueryDocumentsReadEnumerationNamesInAnyCase) {
  CQuery query;
  query.FromXML(
      "<query><criteria><conditionexpression logicaloperator=\"DLOOR\"><conditions>"
      "<condition attributename=\"WorkitemID\" operator=\"DCOIN\">1,2</condition>"
      "</conditions></conditionexpression></criteria>"
      "<orderby><sort attributename=\"Priority\" sortorder=\"DSDESCENDING\"/></orderby></query>");
  ASSERT_NE(query.Criteria(), nullptr);
  EXPECT_EQ(query.Criteria()->Conditions()->Item(1)->Operator(), dcoIn);
  EXPECT_EQ(query.OrderBy()->Item(1)->SortOrder(), dsDescending);

  auto attributes = std::make_shared<CAttributes>();
  attributes->Add("w", "WORKITEMID", "Work item", kAttrPrimaryKey);
  auto criteria = std::make_shared<CConditionExpression>();
  criteria->Conditions()->Add(std::make_shared<CCondition>("workitemid", dcoEqualto, Variant(1)));
  EXPECT_EQ(CConditionToStringBuilder().ToString(criteria, attributes), " (w.`workitemid` = 1) ");
}

}  // namespace
