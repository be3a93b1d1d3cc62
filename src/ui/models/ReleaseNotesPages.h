// Release notes for a view, in pages of a few rows each, so that it makes only those that are
// looked at, however long the notes are.
//
// Main thread only. Notes that are set once more as they are leave the view as it is.
#pragma once

#include <QAbstractListModel>
#include <QString>
#include <QVariantList>
#include <vector>

#include "updates/ReleaseNotesView.h"

namespace vemo {

class ReleaseNotesPages : public QAbstractListModel {
  Q_OBJECT

 public:
  enum Role {
    /// Each with `kind` ("heading", "bullet", "paragraph"), `markup`, in Qt's rich text, and its
    /// `links`, with `words` and `address`.
    Rows = Qt::UserRole + 1,
    RowCount,
    HasLinks,
  };

  static constexpr int mostRows = 40;  ///< of a page

  void setMarkdown(const QString& markdown);

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 private:
  QString m_markdown;
  std::vector<ReleaseNotesView::Block> m_blocks;
};

}  // namespace vemo
