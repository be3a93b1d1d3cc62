#include "ui/models/HistoryModel.h"

#include <algorithm>

#include "session/AppState.h"
#include "ui/models/RelativeTime.h"
#include "ui/models/ToastModel.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

HistoryModel::HistoryModel(With with)
    : m_with(with),
      m_items(with.appState.history().recentDictations()),
      m_observation(with.appState.changed.observe([this] { follow(); })),
      m_tasks(with.mainThread) {}

int HistoryModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : count();
}

QHash<int, QByteArray> HistoryModel::roleNames() const {
  return {{Text, "text"}, {Age, "age"}, {CopySymbol, "copySymbol"}, {CopyLabel, "copyLabel"}};
}

QVariant HistoryModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const auto& item = m_items[static_cast<std::size_t>(index.row())];
  const bool isCopied = item.id == m_copied;
  switch (role) {
    case Text:
      return item.text;
    case Age:
      return relativeTime(age(item));
    case CopySymbol:
      return isCopied ? u"checkmark"_s : u"doc.on.doc"_s;
    case CopyLabel:
      return isCopied ? tr("Copied") : tr("Copy");
    default:
      return {};
  }
}

void HistoryModel::copy(int row) {
  if (row < 0 || row >= count()) return;
  const DictationItem item = m_items[static_cast<std::size_t>(row)];
  if (!m_with.appState.copyTranscript(item.text)) {
    m_with.toast.show(tr("The clipboard can't be written"));
    return;
  }
  setCopied(item.id);
  m_copiedTask.cancel();
  m_copiedTask =
      m_tasks.start([this](std::stop_token stop) { return forgetCopied(std::move(stop)); });
  m_with.toast.show(tr("Transcription copied to clipboard"));
}

void HistoryModel::setShown(bool isShown) {
  if (isShown == m_isShown) return;
  m_isShown = isShown;
  if (isShown) updateAll(Age);
  watchAges();
}

void HistoryModel::follow() {
  const auto& current = m_with.appState.history().recentDictations();
  if (current == m_items) return;
  removeRowsThatWent(current);
  insertRowsThatCame(current);
  watchAges();
  Q_EMIT countChanged();
}

void HistoryModel::removeRowsThatWent(const std::vector<DictationItem>& current) {
  for (int row = count() - 1; row >= 0; --row) {
    const auto& item = m_items[static_cast<std::size_t>(row)];
    if (std::ranges::find(current, item) != current.end()) continue;
    beginRemoveRows({}, row, row);
    m_items.erase(m_items.begin() + row);
    endRemoveRows();
  }
}

/// What stayed is in the order of `current`, since a history only grows at its front.
void HistoryModel::insertRowsThatCame(const std::vector<DictationItem>& current) {
  for (int row = 0; row < static_cast<int>(current.size()); ++row) {
    const auto& item = current[static_cast<std::size_t>(row)];
    if (row < count() && m_items[static_cast<std::size_t>(row)] == item) continue;
    beginInsertRows({}, row, row);
    m_items.insert(m_items.begin() + row, item);
    endInsertRows();
  }
}

void HistoryModel::setCopied(const QUuid& id) {
  m_copied = id;
  updateAll(CopySymbol);
  updateAll(CopyLabel);
}

void HistoryModel::updateAll(Role role) {
  if (count() > 0) Q_EMIT dataChanged(index(0), index(count() - 1), {role});
}

void HistoryModel::watchAges() {
  m_ageTask.cancel();
  if (!m_isShown || m_items.empty()) return;
  m_ageTask =
      m_tasks.start([this](std::stop_token stop) { return keepAgesCurrent(std::move(stop)); });
}

Clock::Duration HistoryModel::age(const DictationItem& item) const {
  return m_with.clock.wallTime() - item.timestamp;
}

Task<> HistoryModel::keepAgesCurrent(std::stop_token stop) {
  while (!stop.stop_requested()) {
    Clock::Duration pause = std::chrono::hours(24);
    for (const auto& item : m_items) pause = std::min(pause, untilRelativeTimeChanges(age(item)));
    co_await m_with.clock.sleep(pause, stop);
    if (!stop.stop_requested()) updateAll(Age);
  }
}

Task<> HistoryModel::forgetCopied(std::stop_token stop) {
  co_await m_with.clock.sleep(timeCopied, stop);
  if (!stop.stop_requested()) setCopied({});
}

}  // namespace vemo
