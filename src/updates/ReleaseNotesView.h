// Release notes as the user reads them: rows of a small markdown, and the text of a row as markup.
//
// A plain value. The notes come from outside: nothing in them is fetched, run or opened. Any
// thread.
#pragma once

#include <QHashFunctions>
#include <QString>
#include <vector>

namespace vemo {

class ReleaseNotesView {
 public:
  struct Block {
    enum class Kind { Heading, Bullet, Paragraph };

    Kind kind;
    QString text;  ///< may hold inline markdown

    friend bool operator==(const Block&, const Block&) = default;
    friend std::size_t qHash(const Block& block, std::size_t seed) {
      return qHashMulti(seed, static_cast<int>(block.kind), block.text);
    }
  };

  explicit ReleaseNotesView(const QString& markdown);

  /// In the order of the document; a blank line is no row.
  const std::vector<Block>& rows() const { return m_rows; }

 private:
  std::vector<Block> m_rows;
};

/// Inline markdown as the rich text of Qt: emphasis, code and links to http and https pages, with
/// its blanks kept. An image becomes its description, and a marker that marks nothing stays as it
/// is.
QString inlineMarkup(const QString& text);

struct InlineLink {
  QString words;  ///< as they are read
  /// Where the text has links to that page already, with blanks behind it, which HTML passes over:
  /// a view tells the links apart by them.
  QString address;

  friend bool operator==(const InlineLink&, const InlineLink&) = default;
};

/// The links of that rich text, in its order.
std::vector<InlineLink> inlineLinks(const QString& text);

}  // namespace vemo
