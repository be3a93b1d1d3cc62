#include "integrations/FirstByPrefix.h"

#include <algorithm>
#include <limits>

namespace vemo {

FirstByPrefix::FirstByPrefix(std::vector<Entry> entries) : m_sorted(std::move(entries)) {
  std::ranges::sort(m_sorted);
  const std::size_t count = m_sorted.size();
  m_lowestPlace.resize(2 * count);
  for (std::size_t i = 0; i < count; ++i) m_lowestPlace[count + i] = m_sorted[i].second;
  for (std::size_t node = count; node-- > 1;)
    m_lowestPlace[node] = std::min(m_lowestPlace[2 * node], m_lowestPlace[2 * node + 1]);
}

std::optional<std::size_t> FirstByPrefix::find(QStringView prefix) const {
  const auto begin = std::ranges::lower_bound(
      m_sorted, prefix, {}, [](const Entry& entry) { return QStringView(entry.first); });
  const auto end = std::partition_point(begin, m_sorted.end(), [prefix](const Entry& entry) {
    return entry.first.startsWith(prefix);
  });
  if (begin == end) return std::nullopt;

  std::size_t lowest = std::numeric_limits<std::size_t>::max();
  const std::size_t count = m_sorted.size();
  auto left = count + static_cast<std::size_t>(begin - m_sorted.begin());
  auto right = count + static_cast<std::size_t>(end - m_sorted.begin());
  for (; left < right; left /= 2, right /= 2) {
    if (left % 2 == 1) lowest = std::min(lowest, m_lowestPlace[left++]);
    if (right % 2 == 1) lowest = std::min(lowest, m_lowestPlace[--right]);
  }
  return lowest;
}

}  // namespace vemo
