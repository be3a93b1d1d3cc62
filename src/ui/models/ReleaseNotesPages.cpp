#include "ui/models/ReleaseNotesPages.h"

#include <QVariantMap>
#include <algorithm>
#include <span>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

using Block = ReleaseNotesView::Block;

QString nameOf(Block::Kind kind) {
  switch (kind) {
    case Block::Kind::Heading:
      return u"heading"_s;
    case Block::Kind::Bullet:
      return u"bullet"_s;
    case Block::Kind::Paragraph:
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

QVariantList rowsOf(std::span<const Block> blocks) {
  QVariantList rows;
  for (const auto& block : blocks)
    rows.append(QVariantMap{{u"kind"_s, nameOf(block.kind)},
                            {u"markup"_s, inlineMarkup(block.text)},
                            {u"links"_s, linksOf(block.text)}});
  return rows;
}

}  // namespace

void ReleaseNotesPages::setMarkdown(const QString& markdown) {
  if (markdown == m_markdown) return;
  beginResetModel();
  m_markdown = markdown;
  m_blocks = ReleaseNotesView(markdown).rows();
  endResetModel();
}

int ReleaseNotesPages::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : (static_cast<int>(m_blocks.size()) + mostRows - 1) / mostRows;
}

QVariant ReleaseNotesPages::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const auto first = static_cast<std::size_t>(index.row()) * mostRows;
  const auto count = std::min<std::size_t>(mostRows, m_blocks.size() - first);
  const auto blocks = std::span(m_blocks).subspan(first, count);
  switch (role) {
    case Rows:
      return rowsOf(blocks);
    case RowCount:
      return static_cast<int>(count);
    case HasLinks:
      return std::ranges::any_of(
          blocks, [](const Block& block) { return !inlineLinks(block.text).empty(); });
    default:
      return {};
  }
}

QHash<int, QByteArray> ReleaseNotesPages::roleNames() const {
  return {{Rows, "rows"}, {RowCount, "rowCount"}, {HasLinks, "hasLinks"}};
}

}  // namespace vemo
