// A name and below it a password, in Qt's own fields; the name has the focus.

#include <QApplication>
#include <QLineEdit>
#include <QVBoxLayout>
#include <QWidget>

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  QWidget form;
  QVBoxLayout layout(&form);
  QLineEdit name;
  QLineEdit password;
  password.setEchoMode(QLineEdit::Password);
  layout.addWidget(&name);
  layout.addWidget(&password);
  form.setWindowTitle(QStringLiteral("password form"));
  form.show();
  return QApplication::exec();
}
