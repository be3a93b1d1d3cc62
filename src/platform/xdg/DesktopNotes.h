// Notes of the desktop's own notification service, with choices where it can show them.
//
// A note takes the place of the one before it. Main thread only; no answer of the desktop's is
// waited for. Where nobody shows notes nothing is shown, and nothing chosen. Destroying it takes
// back a note with choices, which would lead nowhere.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>
#include <map>
#include <vector>

namespace vemo {

class DesktopNotes : public QObject {
  Q_OBJECT

 public:
  struct Choice {
    QString label;
    std::function<void()> choose;
  };
  struct Note {
    QString title;
    QString text;
    std::vector<Choice> choices;    ///< buttons, at most one of which is pressed
    std::function<void()> dismiss;  ///< the user has closed it without a choice; may be empty
  };

  DesktopNotes();
  ~DesktopNotes() override;

  void show(Note note);

 private Q_SLOTS:
  void actionInvoked(uint id, const QString& action);
  void notificationClosed(uint id, uint reason);

 private:
  void notify(Note note, const QStringList& capabilities);
  void forgetAll(const QString& service, const QString& ownerBefore);

  std::map<uint, Note> m_standing;  ///< by the service's numbers
  uint m_last = 0;                  ///< the number of the last one; 0 for none
};

}  // namespace vemo
