#include "platform/updater/Appcast.h"

#include <QSet>
#include <QVersionNumber>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <algorithm>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr std::size_t mostItems = 100;
constexpr std::size_t mostFiles = 10'000;
constexpr qsizetype longestText = 64 * 1024;

constexpr int deepest = 16;  ///< rss, channel, item, file, and what later versions may add

class Reader {
 public:
  explicit Reader(const QByteArray& xml) : m_xml(xml) { m_xml.setEntityExpansionLimit(0); }

  std::expected<Appcast, QString> read() {
    if (next() && m_xml.name() == u"rss" && next() && m_xml.name() == u"channel") readChannel();
    while (!m_xml.atEnd()) advance();
    if (!m_xml.hasError() && m_appcast.serial == 0) fail(u"it has no serial number"_s);
    if (!m_xml.hasError() && !m_appcast.expires.isValid()) fail(u"it has no date of expiry"_s);
    if (m_xml.hasError())
      return std::unexpected(
          u"line %1: %2"_s.arg(QString::number(m_xml.lineNumber()), m_xml.errorString()));
    return std::move(m_appcast);
  }

 private:
  void fail(const QString& why) { m_xml.raiseError(why); }

  void advance() {
    m_xml.readNext();
    if (m_xml.isDTD()) fail(u"a document type isn't allowed"_s);
    if (m_xml.isStartElement() && ++m_depth > deepest) fail(u"it is nested too deeply"_s);
    if (m_xml.isEndElement()) --m_depth;
  }

  /// The next element's start, below the present one.
  bool next() {
    while (!m_xml.atEnd()) {
      advance();
      if (m_xml.isStartElement()) return true;
      if (m_xml.isEndElement()) return false;
    }
    return false;
  }

  /// To the end of the present element.
  void skip() {
    for (const int outside = m_depth - 1; m_depth > outside && !m_xml.atEnd();) advance();
  }

  QString text() {
    QString text = m_xml.readElementText(QXmlStreamReader::ErrorOnUnexpectedElement);
    --m_depth;
    if (text.size() > longestText) fail(u"a text is too long"_s);
    return text;
  }

  quint64 number(const QString& text) {
    bool isNumber = false;
    const quint64 value = text.toULongLong(&isNumber);
    if (!isNumber) fail(u"\"%1\" isn't a number"_s.arg(text.left(40)));
    return value;
  }

  QString attribute(const QString& name) { return m_xml.attributes().value(name).toString(); }

  void readChannel() {
    while (next()) {
      if (m_xml.name() == u"serial") {
        m_appcast.serial = number(text());
      } else if (m_xml.name() == u"expires") {
        m_appcast.expires = QDateTime::fromString(text(), Qt::ISODate);
      } else if (m_xml.name() == u"days") {
        m_appcast.days = number(text());
      } else if (m_xml.name() == u"item") {
        m_appcast.items.push_back(readItem());
        if (m_appcast.items.size() > mostItems) fail(u"there are too many items"_s);
      } else {
        skip();
      }
    }
  }

  AppcastItem readItem() {
    AppcastItem item;
    while (next()) {
      const auto name = m_xml.name();
      if (name == u"version") {
        item.shown.displayVersion = text();
      } else if (name == u"build") {
        item.shown.buildVersion = text();
        item.build = number(item.shown.buildVersion);
      } else if (name == u"channel") {
        item.channel = text();
      } else if (name == u"minimumSystemVersion") {
        item.minimumSystemVersion = text();
      } else if (name == u"architecture") {
        item.architecture = text();
      } else if (name == u"criticalUpdate") {
        item.shown.isCritical = true;
        skip();
      } else if (name == u"description") {
        item.shown.notes = text();
      } else if (name == u"enclosure") {
        readEnclosure(item);
      } else if (name == u"file") {
        readFile(item);
      } else {
        skip();
      }
    }
    check(item);
    return item;
  }

  void readEnclosure(AppcastItem& item) {
    item.archive = attribute(u"url"_s);
    item.archiveSize = static_cast<qint64>(number(attribute(u"length"_s)));
    item.archiveSignature = QByteArray::fromBase64(attribute(u"edSignature"_s).toLatin1());
    skip();
  }

  void readFile(AppcastItem& item) {
    item.files.push_back({.path = attribute(u"path"_s),
                          .size = static_cast<qint64>(number(attribute(u"size"_s))),
                          .sha256 = QByteArray::fromHex(attribute(u"sha256"_s).toLatin1()),
                          .isExecutable = attribute(u"executable"_s) == u"true"});
    if (item.files.size() > mostFiles) fail(u"an item has too many files"_s);
    skip();
  }

  void check(const AppcastItem& item) {
    if (m_xml.hasError()) return;
    if (item.shown.displayVersion.isEmpty() || item.build == 0)
      return fail(u"an item has no version or no build"_s);
    if (item.archive.contains(u'/') || !isPathInside(item.archive))
      return fail(u"an archive isn't a file beside the feed"_s);
    if (item.archiveSize <= 0 || item.archiveSize > Appcast::largestArchive)
      return fail(u"an archive's size is out of range"_s);
    qint64 sum = 0;
    QSet<QString> paths;
    for (const AppcastFile& file : item.files) {
      if (!isPathInside(file.path) || paths.contains(file.path))
        return fail(u"a file's path isn't allowed"_s);
      if (file.sha256.size() != 32) return fail(u"a file has no hash"_s);
      if (file.size < 0 || file.size > Appcast::largestVersion ||
          (sum += file.size) > Appcast::largestVersion)
        return fail(u"the files are too large"_s);
      paths.insert(file.path);
    }
    if (!paths.contains(u"bin/vemo"_s)) fail(u"an item has no program"_s);
  }

  QXmlStreamReader m_xml;
  int m_depth = 0;
  Appcast m_appcast;
};

void writeItem(QXmlStreamWriter& xml, const AppcastItem& item) {
  xml.writeStartElement(u"item"_s);
  xml.writeTextElement(u"version"_s, item.shown.displayVersion);
  xml.writeTextElement(u"build"_s, QString::number(item.build));
  if (!item.channel.isEmpty()) xml.writeTextElement(u"channel"_s, item.channel);
  if (!item.minimumSystemVersion.isEmpty())
    xml.writeTextElement(u"minimumSystemVersion"_s, item.minimumSystemVersion);
  if (!item.architecture.isEmpty()) xml.writeTextElement(u"architecture"_s, item.architecture);
  if (item.shown.isCritical) xml.writeEmptyElement(u"criticalUpdate"_s);
  if (item.shown.notes) xml.writeTextElement(u"description"_s, *item.shown.notes);
  xml.writeEmptyElement(u"enclosure"_s);
  xml.writeAttribute(u"url"_s, item.archive);
  xml.writeAttribute(u"length"_s, QString::number(item.archiveSize));
  xml.writeAttribute(u"edSignature"_s, QString::fromLatin1(item.archiveSignature.toBase64()));
  for (const AppcastFile& file : item.files) {
    xml.writeEmptyElement(u"file"_s);
    xml.writeAttribute(u"path"_s, file.path);
    xml.writeAttribute(u"size"_s, QString::number(file.size));
    xml.writeAttribute(u"sha256"_s, QString::fromLatin1(file.sha256.toHex()));
    if (file.isExecutable) xml.writeAttribute(u"executable"_s, u"true"_s);
  }
  xml.writeEndElement();
}

}  // namespace

std::expected<Appcast, QString> Appcast::read(const QByteArray& xml) {
  if (xml.size() > largestFeed) return std::unexpected(u"it is too large"_s);
  return Reader(xml).read();
}

QByteArray Appcast::write() const {
  QByteArray bytes;
  QXmlStreamWriter xml(&bytes);
  xml.setAutoFormatting(true);
  xml.writeStartDocument();
  xml.writeStartElement(u"rss"_s);
  xml.writeAttribute(u"version"_s, u"2.0"_s);
  xml.writeStartElement(u"channel"_s);
  xml.writeTextElement(u"title"_s, u"Vemo"_s);
  xml.writeTextElement(u"serial"_s, QString::number(serial));
  xml.writeTextElement(u"expires"_s, expires.toUTC().toString(Qt::ISODate));
  xml.writeTextElement(u"days"_s, QString::number(days));
  for (const AppcastItem& item : items) writeItem(xml, item);
  xml.writeEndElement();
  xml.writeEndElement();
  xml.writeEndDocument();
  return bytes;
}

std::optional<AppcastItem> chooseUpdate(const Appcast& appcast, const UpdateWish& wish) {
  const auto system = QVersionNumber::fromString(wish.systemVersion).normalized();
  const AppcastItem* best = nullptr;
  bool isAnyCritical = false;
  for (const AppcastItem& item : appcast.items) {
    const bool fits =
        item.build > wish.newerThan &&
        (item.channel.isEmpty() || wish.channels.contains(item.channel)) &&
        (item.architecture.isEmpty() || item.architecture == wish.architecture) &&
        (system.isNull() ||
         QVersionNumber::fromString(item.minimumSystemVersion).normalized() <= system);
    if (fits) isAnyCritical = isAnyCritical || item.shown.isCritical;
    if (fits && (!best || item.build > best->build)) best = &item;
  }
  if (!best) return std::nullopt;
  AppcastItem chosen = *best;
  chosen.shown.isCritical = isAnyCritical;
  return chosen;
}

bool isPathInside(const QString& path) {
  if (path.isEmpty() || path.size() > 255) return false;
  const auto parts = path.split(u'/');
  return std::ranges::all_of(parts, [](const QString& part) {
    return !part.isEmpty() && !part.startsWith(u'.') && std::ranges::all_of(part, [](QChar c) {
      return c.unicode() < 0x80 && (c.isLetterOrNumber() || u"._+-@ "_s.contains(c));
    });
  });
}

}  // namespace vemo
