#pragma once

#include <QObject>

#include "ui/WindowContext.h"

class QWidget;

namespace zolvar {

/// What the window opens by itself once it is there for the first time: how to begin while there is
/// no folder, or what is new after the version changed. Made before the application starts, which
/// remembers the version. The window and the context outlive it. Main thread.
class Greeting : public QObject {
  Q_OBJECT

 public:
  Greeting(WindowContext& context, QWidget& window);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void greetSoon();
  void greet();

  WindowContext& context_;
  QWidget& window_;
  bool isNewVersion_;
  bool hasGreeted_ = false;
};

}  // namespace zolvar
