#include "ui/models/UpdateReadyCardModel.h"

#include "session/AppState.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

UpdateReadyCardModel::UpdateReadyCardModel(UpdateManager& updates, AppState& appState)
    : m_updates(updates),
      m_observations{updates.changed.observe([this] { readUpdate(); }),
                     appState.changed.observe([this] { Q_EMIT changed(); })} {
  readUpdate();
}

void UpdateReadyCardModel::readUpdate() {
  m_notes.setMarkdown(hasNotes() ? *m_updates.readyUpdate()->notes : QString());
  Q_EMIT changed();
}

QString UpdateReadyCardModel::versionLine() const {
  return isShown() ? u"Vemo "_s + m_updates.readyUpdate()->version : QString();
}

QString UpdateReadyCardModel::tooltip() const {
  return canRestart() ? tr("Quit Vemo, install the update and open it again")
                      : tr("Available when dictation finishes");
}

bool UpdateReadyCardModel::hasNotes() const {
  return isShown() && !m_updates.readyUpdate()->notes.value_or(QString()).isEmpty();
}

void UpdateReadyCardModel::toggleNotes() {
  m_showNotes = !m_showNotes;
  Q_EMIT changed();
}

}  // namespace vemo
