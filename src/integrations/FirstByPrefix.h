// Finds, among names that stand in an order, the first that begins with a text.
//
// A value. A lookup costs a binary search, however many names begin so.
#pragma once

#include <QString>
#include <QStringView>
#include <optional>
#include <utility>
#include <vector>

namespace vemo {

class FirstByPrefix {
 public:
  /// A name and its place in the order. Several names may share a place.
  using Entry = std::pair<QString, std::size_t>;

  FirstByPrefix() = default;
  explicit FirstByPrefix(std::vector<Entry> entries);

  /// The lowest place of a name that begins with `prefix`.
  std::optional<std::size_t> find(QStringView prefix) const;

 private:
  std::vector<Entry> m_sorted;
  /// A binary tree in an array: leaf count + i holds the place of m_sorted[i], and every node above
  /// the lower place of its two children.
  std::vector<std::size_t> m_lowestPlace;
};

}  // namespace vemo
