#include "ui/SpokenWindow.h"

#include <QApplication>
#include <optional>

#include "app/Application.h"
#include "app/Outcomes.h"
#include "platform/Platform.h"
#include "ui/Languages.h"
#include "ui/MainWindow.h"
#include "ui/TrayIcon.h"
#include "ui/WindowFrontEnd.h"
#include "ui/sheets/WindowSheets.h"

namespace zolvar {
namespace {

constexpr const char* LanguageKey = "Language";
constexpr double Pause = 0.2;  // seconds between two looks at what is open

}  // namespace

/// In order of need.
struct SpokenWindow::Shown {
  Shown(const std::string& setting, WindowContext& context)
      : language(setting), window(context), sheets(window, context), frontEnd(window, sheets) {
    window.setSheets(&sheets);
    if (!QSystemTrayIcon::isSystemTrayAvailable()) return;
    tray.emplace(context, window);
    window.setHasTray(true);
  }
  ~Shown() {
    window.setSheets(nullptr);
    window.hide();
  }
  Shown(const Shown&) = delete;
  Shown& operator=(const Shown&) = delete;

  SpokenLanguage language;
  MainWindow window;
  WindowSheets sheets;
  WindowFrontEnd frontEnd;
  std::optional<TrayIcon> tray;
};

SpokenWindow::SpokenWindow(Application& application, Operations& operations)
    : news_(application),
      sheetsController_(application, operations),
      context_{application,
               operations,
               application.outcomes(),
               sheetsController_,
               application.platform(),
               news_},
      observation_(context_.platform.defaults.observe(LanguageKey, [this] { speakAnewSoon(); })) {
  open();
}

SpokenWindow::~SpokenWindow() {
  context_.platform.runLoop.cancel(timer_);
  close();
}

std::string SpokenWindow::languageSetting() const {
  return context_.platform.defaults.string(LanguageKey).value_or("");
}

MainWindow& SpokenWindow::window() { return shown_->window; }

WindowSheets& SpokenWindow::sheets() { return shown_->sheets; }

bool SpokenWindow::hasTray() const { return shown_->tray.has_value(); }

void SpokenWindow::open() {
  setting_ = languageSetting();
  shown_ = std::make_unique<Shown>(setting_, context_);
  connect(&shown_->window, &MainWindow::quitWanted, this, &SpokenWindow::quitWanted);
  context_.outcomes.setFrontEnd(&shown_->frontEnd);
}

void SpokenWindow::close() {
  context_.outcomes.setFrontEnd(nullptr);
  shown_.reset();
}

void SpokenWindow::speakAnewSoon() {
  if (timer_ != 0) return;
  timer_ = context_.platform.runLoop.after(Pause, [this] {
    timer_ = 0;
    speakAnew();
  });
}

void SpokenWindow::speakAnew() {
  if (languageSetting() == setting_) return;
  const bool isBusy =
      QApplication::activeModalWidget() != nullptr || QApplication::activePopupWidget() != nullptr;
  if (isBusy) return speakAnewSoon();
  const bool wasVisible = shown_->window.isVisible();
  close();
  open();
  if (wasVisible) shown_->window.comeToFront();
}

}  // namespace zolvar
