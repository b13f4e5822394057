#pragma once

#include <QObject>
#include <memory>
#include <string>

#include "app/SheetsController.h"
#include "platform/UserDefaults.h"
#include "ui/FolderNews.h"
#include "ui/WindowContext.h"

namespace zolvar {

class MainWindow;
class WindowSheets;

/// The window with all that hangs on it, its sheets, the tray icon and what the engine asks, in the
/// language of the setting. When that changes, wherever it is changed, all of it is made anew from
/// what the window remembers, as soon as no sheet and no menu is open. Application and operations
/// outlive it. Main thread.
class SpokenWindow : public QObject {
  Q_OBJECT

 public:
  SpokenWindow(Application& application, Operations& operations);
  ~SpokenWindow() override;

  [[nodiscard]] MainWindow& window();
  [[nodiscard]] WindowSheets& sheets();
  /// Where there is none, the window is all that a person sees of the program.
  [[nodiscard]] bool hasTray() const;

 Q_SIGNALS:
  void quitWanted();

 private:
  struct Shown;

  void open();
  void close();
  void speakAnewSoon();
  void speakAnew();
  [[nodiscard]] std::string languageSetting() const;

  FolderNews news_;
  SheetsController sheetsController_;
  WindowContext context_;
  std::string setting_;  ///< the language that is spoken
  std::unique_ptr<Shown> shown_;
  RunLoop::Id timer_ = 0;
  std::unique_ptr<UserDefaults::Observation> observation_;
};

}  // namespace zolvar
