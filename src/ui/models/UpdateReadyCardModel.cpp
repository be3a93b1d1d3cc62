#include "ui/models/UpdateReadyCardModel.h"

#include <QVariantMap>

#include "session/AppState.h"
#include "updates/ReleaseNotesView.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

QString nameOf(ReleaseNotesView::Block::Kind kind) {
  using Kind = ReleaseNotesView::Block::Kind;
  switch (kind) {
    case Kind::Heading:
      return u"heading"_s;
    case Kind::Bullet:
      return u"bullet"_s;
    case Kind::Paragraph:
      return u"paragraph"_s;
  }
  return {};
}

QVariantList linksOf(const QString& text) {
  QVariantList links;
  for (const auto& [words, address] : inlineLinks(text))
    links.append(QVariantMap{{u"words"_s, words}, {u"address"_s, address}});
  return links;
}

}  // namespace

UpdateReadyCardModel::UpdateReadyCardModel(UpdateManager& updates, AppState& appState)
    : m_updates(updates),
      m_observations{updates.changed.observe([this] { Q_EMIT changed(); }),
                     appState.changed.observe([this] { Q_EMIT changed(); })} {}

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

QVariantList UpdateReadyCardModel::notes() const {
  QVariantList rows;
  if (!hasNotes()) return rows;
  for (const auto& block : ReleaseNotesView(*m_updates.readyUpdate()->notes).rows())
    rows.append(QVariantMap{{u"kind"_s, nameOf(block.kind)},
                            {u"markup"_s, inlineMarkup(block.text)},
                            {u"links"_s, linksOf(block.text)}});
  return rows;
}

void UpdateReadyCardModel::toggleNotes() {
  m_showNotes = !m_showNotes;
  Q_EMIT changed();
}

}  // namespace vemo
