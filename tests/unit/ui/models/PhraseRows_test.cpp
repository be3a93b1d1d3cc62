#include "ui/models/PhraseRows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

/// A view that believes nothing but what it is told.
class Mirror {
 public:
  explicit Mirror(PhraseRows& model) : m_model(model) {
    QObject::connect(&model, &PhraseRows::rowsInserted,
                     [this](const QModelIndex&, int first, int last) { insert(first, last); });
    QObject::connect(&model, &PhraseRows::rowsRemoved,
                     [this](const QModelIndex&, int first, int last) { remove(first, last); });
    QObject::connect(&model, &PhraseRows::dataChanged,
                     [this](const QModelIndex& first, const QModelIndex& last) {
                       change(first.row(), last.row());
                     });
    QObject::connect(&model, &PhraseRows::modelReset,
                     [] { ADD_FAILURE() << "the view lost its place"; });
  }

  std::vector<PhraseRow> rows;
  std::vector<std::string> signals;  ///< since this was last emptied

 private:
  PhraseRow read(int row) const {
    const auto value = [&](PhraseRows::Role role) {
      return m_model.data(m_model.index(row), role).toString();
    };
    return {value(PhraseRows::Id), value(PhraseRows::Spoken), value(PhraseRows::Written)};
  }
  void note(const char* what, int first, int last) {
    signals.push_back(std::string(what) + ' ' + std::to_string(first) + '-' + std::to_string(last));
  }
  void insert(int first, int last) {
    note("insert", first, last);
    for (int row = first; row <= last; ++row) rows.insert(rows.begin() + row, read(row));
  }
  void remove(int first, int last) {
    note("remove", first, last);
    rows.erase(rows.begin() + first, rows.begin() + last + 1);
  }
  void change(int first, int last) {
    note("change", first, last);
    for (int row = first; row <= last; ++row) rows.at(static_cast<std::size_t>(row)) = read(row);
  }

  PhraseRows& m_model;
};

class PhraseRowsTest : public testing::Test {
 protected:
  static std::vector<PhraseRow> numbered(int count) {
    std::vector<PhraseRow> rows;
    for (int number = 0; number < count; ++number)
      rows.push_back({QString::number(number), u"say"_s, u"write"_s});
    return rows;
  }

  void show(std::vector<PhraseRow> rows) {
    mirror.signals.clear();
    model.setRows(std::move(rows));
  }

  PhraseRows model;
  Mirror mirror{model};
};

TEST_F(PhraseRowsTest, ARowAddedToFiveThousandIsOneRowForTheView) {
  show(numbered(5000));
  EXPECT_THAT(mirror.signals, ElementsAre("insert 0-4999"));
  show(numbered(5001));
  EXPECT_THAT(mirror.signals, ElementsAre("insert 5000-5000"));
}

TEST_F(PhraseRowsTest, ARowRemovedFromFiveThousandIsOneRowForTheView) {
  auto rows = numbered(5000);
  show(rows);
  rows.erase(rows.begin() + 2500);
  show(rows);
  EXPECT_THAT(mirror.signals, ElementsAre("remove 2500-2500"));
}

TEST_F(PhraseRowsTest, ARowChangedAmongFiveThousandIsOneRowForTheView) {
  auto rows = numbered(5000);
  show(rows);
  rows[2500].written = u"other"_s;
  show(rows);
  EXPECT_THAT(mirror.signals, ElementsAre("change 2500-2500"));
}

TEST_F(PhraseRowsTest, AnEqualListTellsTheViewNothing) {
  show(numbered(10));
  show(numbered(10));
  EXPECT_THAT(mirror.signals, IsEmpty());
}

TEST_F(PhraseRowsTest, TheCountIsToldOnlyWhenItDiffers) {
  int counts = 0;
  QObject::connect(&model, &PhraseRows::countChanged, [&counts] { ++counts; });
  auto rows = numbered(3);
  show(rows);
  EXPECT_EQ(counts, 1);
  rows[1].spoken = u"other"_s;
  show(rows);
  EXPECT_EQ(counts, 1);
  show({});
  EXPECT_EQ(counts, 2);
  EXPECT_EQ(model.count(), 0);
}

TEST_F(PhraseRowsTest, WhatTheViewIsToldAlwaysGivesTheListThatIsThere) {
  std::mt19937 random(20261121);
  const auto below = [&random](std::size_t limit) { return random() % limit; };
  auto rows = numbered(20);
  for (int round = 0; round < 2000; ++round) {
    for (auto changes = below(4); changes > 0; --changes) {
      const auto kind = below(3);
      if (kind == 0 || rows.empty()) {
        rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(below(rows.size() + 1)),
                    {QString::number(random()), u"say"_s, u"write"_s});
      } else if (kind == 1) {
        rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(below(rows.size())));
      } else {
        rows[below(rows.size())].spoken = QString::number(random());
      }
    }
    show(rows);
    ASSERT_EQ(mirror.rows, rows) << "in round " << round;
  }
}

TEST_F(PhraseRowsTest, ARowIsFoundByItsIdentifier) {
  show(numbered(3));
  ASSERT_TRUE(model.find(u"2"_s));
  EXPECT_EQ(model.find(u"2"_s)->id, u"2"_s);
  EXPECT_FALSE(model.find(u"3"_s));
}

TEST_F(PhraseRowsTest, WhatIsNoRowHasNoData) {
  show(numbered(1));
  EXPECT_FALSE(model.data({}, PhraseRows::Spoken).isValid());
  EXPECT_FALSE(model.data(model.index(0), Qt::UserRole + 100).isValid());
}

}  // namespace
}  // namespace vemo
