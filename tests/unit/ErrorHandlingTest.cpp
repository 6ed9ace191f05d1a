// The re-raise convention, RaiseError and the message table.

#include <gtest/gtest.h>

#include <regex>
#include <stdexcept>

#include "access/ErrorHandling.h"
#include "support/ErrorCapture.h"

using namespace orvmysql;
using namespace orvmysql::detail;

namespace {

void Inner() {
  Guard({"Inner Ln "}, [] { RaiseError(kMsgPrimaryKey, "Inner"); });
}

void Outer() {
  Guard({"COuter: IOuter_Run Function ("}, [] { Inner(); });
}

}  // namespace

TEST(RaiseError, FillsPlaceholdersInOrderAndSetsTheObjectErrorBits) {
  const Error e = orvtest::Raised([] {
    RaiseError(kMsgInvalidOperator, "here", {"dcoContains", "Status"});
  });
  EXPECT_EQ(static_cast<uint32_t>(e.Number()), 0x80042003u);
  EXPECT_EQ(e.Description(),
            "Operator 'dcoContains' is not a valid operator for the attribute 'Status'.");
  EXPECT_TRUE(
      std::regex_match(e.Source(), std::regex(R"(pelOrv=> \[Err:8195\]\[Ver:\d+\.\d+\.\d+\])")))
      << e.Source();
}

TEST(RaiseError, MessagesWithoutPlaceholdersIgnoreParameters) {
  const Error e = orvtest::Raised([] { RaiseError(kMsgPrimaryKey, "here", {"unused"}); });
  EXPECT_EQ(e.Description(), "Error while generating primary key.");
  const Error missing = orvtest::Raised([] { RaiseError(8194, "here"); });
  EXPECT_EQ(missing.Description(), "Unknown attribute '%0'.");
}

TEST(RaiseError, UnknownNumberBecomesMissingResourceError) {
  EXPECT_EQ(orvtest::Raised([] { RaiseError(1234, "here"); }).Number(), kErrResourceNotFound);
}

TEST(RaiseError, LanguageLookupWinsWhenItKnowsTheNumber) {
  SetMessageLookup(
      [](int32_t n) { return n == 8196 ? std::string("Schlüsselfehler.") : std::string(); });
  EXPECT_EQ(orvtest::Raised([] { RaiseError(8196, "x"); }).Description(), "Schlüsselfehler.");
  EXPECT_EQ(orvtest::Raised([] { RaiseError(8209, "x"); }).Description(),
            "Workflow name is not provided");
  SetMessageLookup(nullptr);
}

TEST(Guard, EachOperationAddsOneLineToTheSourceTrail) {
  const Error e = orvtest::Raised(Outer);
  EXPECT_EQ(e.Description(), "Error while generating primary key.");
  EXPECT_TRUE(std::regex_match(
      e.Source(), std::regex(R"(pelOrv=> \[Err:8196\]\[Ver:[0-9.]+\] => \r\nInner Ln \d+ => )"
                             R"(\r\nCOuter: IOuter_Run Function \(\d+\))")))
      << e.Source();
}

TEST(Guard, MarkedLineIsReported) {
  const Error e = orvtest::Raised([] {
    Guard({"Op Ln "}, [] {
      MarkLine(4242);
      ThrowRuntimeError(kErrTypeMismatch);
    });
  });
  EXPECT_EQ(e.Number(), kErrTypeMismatch);
  EXPECT_EQ(e.Source(), "orvmysql => \r\nOp Ln 4242");
}

TEST(Guard, ConnectionNoteOnlyForError91WhenAsked) {
  EXPECT_EQ(orvtest::Raised([] {
              Guard({"A Ln ", true}, [] { ThrowRuntimeError(kErrObjectNotSet); });
            }).Description(),
            "Object variable or With block variable not set (Connection)");
  EXPECT_EQ(orvtest::Raised([] {
              Guard({"A Ln ", false}, [] { ThrowRuntimeError(kErrObjectNotSet); });
            }).Description(),
            "Object variable or With block variable not set");
  EXPECT_EQ(orvtest::Raised([] {
              Guard({"A Ln ", true}, [] { ThrowRuntimeError(kErrSubscript); });
            }).Description(),
            "Subscript out of range");
}

TEST(Guard, ForeignExceptionsBecomeRuntimeErrorsAndCleanupRunsFirst) {
  bool cleaned = false;
  const Error e = orvtest::Raised([&] {
    Guard(
        {"A Ln "}, [] { throw std::logic_error("boom"); }, [&] { cleaned = true; });
  });
  EXPECT_TRUE(cleaned);
  EXPECT_EQ(e.Number(), kErrInternal);
  EXPECT_NE(e.Description().find("boom"), std::string::npos);

  const Error statement_error = orvtest::Raised([] {
    const std::string sql = "SELECT broken";
    Guard({"S Ln ", false, &sql}, [] { ThrowRuntimeError(kErrTypeMismatch); });
  });
  EXPECT_EQ(statement_error.Description(), "SELECT broken\r\nType mismatch");
}
