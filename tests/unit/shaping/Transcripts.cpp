#include "Transcripts.h"

#include <QJsonArray>
#include <QJsonObject>

#include "base/Json.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// Words that rules begin with, go on with or end in.
const QStringList& ruleWords() {
  static const QStringList words =
      u"memo,Memo,MEMO,demo,app,the file,the,file,memoapp,api,apis,PR,ui,uy,addictionary,sql,json,"
      u"url,ide,console,dot,log,error,warn,.,triple,equals,equal,double,not,fat,arrow,function,"
      u"greater than or equal,less than or equal to,logical,and,or,git commit dash m,open,edit,"
      u"look,at,in,see,fix,test,read,view,swift,shift,ts,t.s,tee ess,js,j "
      u"son,py,md,go,c,h,m,sh,yml,"
      u"tag,mention,everyone,here,channel,in channel,to,with,for,ask,tell,ping,send,thumbs up,"
      u"thumbsup,plus one,fire,rocket emoji,eyes,check mark,tada,heart emoji,heart,emoji,pray,"
      u"thank you emoji,@Maria,@mg,@Maria.,app state,main window view,config,login view"_s.split(
          u',');
  return words;
}

const QStringList& plainWords() {
  static const QStringList words =
      u"foo,bar,baz,new,york,maria,Maria,john.doe,general,design,team,design-team,report,sig,long,"
      u"a,b,x1,_y,c++,.net,it's,e-mail,foo-bar,don't,straße,STRASSE,привет,Привет,हिन्दी,मेमो,"
      u"日本語,naïve,nai\u0308ve,file\u0301,\uFB01le,te\uFB06,\u017Fwift,\u212Aotlin,\U0001F600,"
      u"\U0001F468\u200D\U0001F469,\U00010400,foo\u00AD,$1,\\,@,@@,#,--,(,),\",'"_s.split(u',');
  return words;
}

const QStringList& gaps() {
  static const QStringList list = {u" "_s,      u" "_s,      u" "_s,  u" "_s,      u" "_s,
                                   u" "_s,      u"  "_s,     u"\n"_s, u"\t"_s,     u"\r\n"_s,
                                   u" \t "_s,   u"\u00A0"_s, u""_s,   u"\u2003"_s, u"\u2028"_s,
                                   u"\u000B"_s, u"\u200B"_s, u"-"_s,  u"\u0085"_s};
  return list;
}

const QStringList& marks() {
  static const QStringList list = {u"."_s, u","_s,  u"!"_s,  u"?"_s,
                                   u"…"_s, u". "_s, u", "_s, u"।"_s};
  return list;
}

}  // namespace

Transcripts::Transcripts(std::uint32_t seed) : m_random(seed) {}

qsizetype Transcripts::number(qsizetype below) {
  return static_cast<qsizetype>(m_random() % static_cast<std::uint32_t>(below));
}

QString Transcripts::inOtherCase(const QString& text) {
  switch (number(8)) {
    case 0:
      return text.toUpper();
    case 1:
      return text.left(1).toUpper() + text.mid(1);
    case 2:
      return text.toLower();
    default:
      return text;
  }
}

QString Transcripts::word() {
  switch (number(12)) {
    case 0:
    case 1:
    case 2:
    case 3:
      return pick(plainWords());
    case 4:
    case 5:
      if (!m_phrases.isEmpty()) return inOtherCase(pick(m_phrases));
      return pick(plainWords());
    case 6:
      return number(40) == 0 ? QString(QChar(0xD800 + static_cast<char16_t>(number(0x800))))
                             : u"w%1"_s.arg(number(20));
    default:
      return inOtherCase(pick(ruleWords()));
  }
}

QString Transcripts::gap() {
  return number(4) == 0 ? pick(gaps()) : u" "_s;
}

QString Transcripts::phrase() {
  QString text = word();
  for (qsizetype more = number(3); more > 0; --more) text += gap() + word();
  return text;
}

QString Transcripts::replacement() {
  return number(3) == 0 ? phrase() + u' ' + phrase() : phrase();
}

QByteArray Transcripts::list(const QString& heardKey, const QString& writtenKey) {
  QJsonArray array;
  const qsizetype count = number(3) == 0 ? number(40) : number(12);
  QString last;
  for (qsizetype i = 0; i < count; ++i) {
    const QString heard = number(3) == 0 && !last.isEmpty() ? last : phrase();
    last = replacement();
    m_phrases.append(heard);
    array.append(QJsonObject{{u"id"_s, QString::number(i)}, {heardKey, heard}, {writtenKey, last}});
  }
  return compactJson(array);
}

ShapingWorld Transcripts::world() {
  ShapingWorld world;
  m_phrases.clear();
  if (number(6) != 0) world.settings.dictionary = list(u"phrase"_s, u"replacement"_s);
  if (number(6) != 0) world.settings.shortcuts = list(u"trigger"_s, u"snippet"_s);
  world.settings.tagsFiles = number(6) != 0;
  world.settings.mentionsPeople = number(6) != 0;
  world.bundleId = number(4) == 0 ? u"org.example.mail"_s : u"com.example.code"_s;
  const QStringList files =
      u"AppState.swift,LoginViewModel.ts,foo-bar.ts,foo_bar.py,foobar.c,README.md,"
      u"Makefile,config.json,x1.test.js,straße.go,main.h,a.b.c,X.TS,@odd.md"_s.split(u',');
  for (const QString& file : files) {
    if (number(2) == 0) world.fileNames.append(file);
  }
  const QStringList names =
      u"maria,Maria Gomez,mg,john.doe,John,foo,BAR,e-mail,here,tag"_s.split(u',');
  for (qsizetype i = number(6); i > 0; --i)
    world.users.push_back({.id = u"U"_s,
                           .name = pick(names),
                           .realName = pick(names),
                           .displayName = number(2) == 0 ? u""_s : pick(names)});
  for (qsizetype i = number(4); i > 0; --i)
    world.channels.push_back(
        {.id = u"C"_s, .name = pick(u"general,design-team,Foo,x1"_s.split(u','))});
  return world;
}

QString Transcripts::transcript() {
  const qsizetype count = number(50) == 0 ? number(400) : number(20);
  QString text = number(12) == 0 ? u"send "_s : QString();
  for (qsizetype i = 0; i < count; ++i) {
    text += word();
    text += number(8) == 0 ? pick(marks()) : gap();
  }
  if (number(12) == 0) text += u" to @maria"_s + (number(2) == 0 ? u"."_s : u""_s);
  return text;
}

}  // namespace vemo
