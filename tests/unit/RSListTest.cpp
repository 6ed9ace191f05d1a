// Row lists: iteration, lookups, clamped skips and the column limits.

#include <gtest/gtest.h>

#include "access/RSList.h"
#include "orvmysql/Error.h"

using namespace orvmysql;

namespace {

std::shared_ptr<IListIterator> ThreeRows() {
  return MakeRowList({"ID", "Name"},
                     {{Variant(1), Variant("a")}, {Variant(2), Null}, {Variant(3), Variant("c")}});
}

int32_t CurrentId(IListIterator& list) {
  return list.CurrentItem()->GetValue("id").ToLong();
}

}  // namespace

TEST(RSList, EmptyResult) {
  auto list = MakeRowList({"A"}, {});
  EXPECT_EQ(list->Count(), 0);
  EXPECT_FALSE(list->GetNext());
  EXPECT_EQ(list->CurrentItem(), nullptr);
  list->Reset();
  list->Skip(3);
  EXPECT_EQ(list->CurrentItem(), nullptr);
  EXPECT_FALSE(list->Exists(Variant(1)));
  EXPECT_EQ(list->GetItem(Variant(1)), nullptr);
}

TEST(RSList, ReadsEveryRowWithCaseInsensitiveNamesAndNulls) {
  auto list = ThreeRows();
  EXPECT_EQ(list->Count(), 3);
  ASSERT_TRUE(list->GetNext());
  auto item = list->CurrentItem();
  EXPECT_EQ(item->GetValue("NAME").ToText(), "a");
  ASSERT_TRUE(list->GetNext());
  EXPECT_TRUE(item->GetValue("name").IsNull());  // the kept item shows the new row
  ASSERT_TRUE(list->GetNext());
  EXPECT_EQ(CurrentId(*list), 3);
  EXPECT_FALSE(list->GetNext());
  EXPECT_EQ(list->CurrentItem(), nullptr);
  list->Reset();
  ASSERT_TRUE(list->GetNext());
  EXPECT_EQ(CurrentId(*list), 1);
}

TEST(RSList, ValueBeforeFirstRowIsNullAndUnknownColumnIsError5) {
  auto list = ThreeRows();
  CRSListItem fresh;
  EXPECT_TRUE(fresh.GetValue("ID").IsNull());
  list->GetNext();
  try {
    list->CurrentItem()->GetValue("nope");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), kErrInvalidCall);
  }
}

TEST(RSList, SkipClampsAndTheNextGetNextLoadsTheSameRow) {
  auto list = ThreeRows();
  list->Skip(10);
  EXPECT_EQ(CurrentId(*list), 3);
  list->Skip(-10);
  EXPECT_EQ(CurrentId(*list), 1);
  list->Skip(1);
  EXPECT_EQ(CurrentId(*list), 2);
  ASSERT_TRUE(list->GetNext());
  EXPECT_EQ(CurrentId(*list), 2);
  ASSERT_TRUE(list->GetNext());
  EXPECT_EQ(CurrentId(*list), 3);
}

TEST(RSList, AtMost301ColumnsAndNoDuplicateNames) {
  auto make = [](int columns, bool duplicate) {
    std::vector<std::string> names;
    std::vector<Variant> row;
    for (int i = 0; i < columns; ++i) {
      names.push_back(duplicate && i == columns - 1 ? "C0" : "c" + std::to_string(i));
      row.emplace_back(i);
    }
    return MakeRowList(names, {row});
  };
  auto ok = make(301, false);
  ASSERT_TRUE(ok->GetNext());
  EXPECT_EQ(ok->CurrentItem()->GetValue("C300").ToLong(), 300);

  for (auto [columns, duplicate, number] :
       {std::tuple{302, false, kErrSubscript}, std::tuple{5, true, kErrDuplicateKey}}) {
    auto list = make(columns, duplicate);
    try {
      list->GetNext();
      FAIL() << columns;
    } catch (const Error& e) {
      EXPECT_EQ(e.Number(), number);
      const auto schema = e.Source().find("CRSListItem:LoadSchema Ln ");
      const auto next = e.Source().find("CRSList:IListIterator_GetNext Ln ");
      EXPECT_NE(schema, std::string::npos);
      EXPECT_NE(next, std::string::npos);
      EXPECT_LT(schema, next);
    }
  }
}
