#include "ui/sheets/WindowSheets.h"

#include <utility>

#include "app/Application.h"
#include "app/Operations.h"
#include "app/Outcomes.h"
#include "app/SheetsController.h"
#include "ui/FolderNews.h"
#include "ui/MainWindow.h"
#include "ui/Texts.h"
#include "ui/sheets/AboutPanel.h"
#include "ui/sheets/DeletionSheet.h"
#include "ui/sheets/PasswordFailureSheet.h"
#include "ui/sheets/PreferencesPanel.h"
#include "ui/sheets/QuickStartPanel.h"
#include "ui/sheets/ReleaseNotesPanel.h"
#include "ui/sheets/SettingsSheet.h"
#include "ui/sheets/ShareContactsSheet.h"
#include "ui/sheets/ShareSheet.h"
#include "ui/sheets/SubscribeSheet.h"

namespace zolvar {
namespace {

QString keyOf(const char* kind, const std::string& about) { return kind + ('/' + toQt(about)); }

QuestionSheet::Words wordsOf(const Alert& alert) {
  QuestionSheet::Words words{said(alert.title), said(alert.text), {}, {}, true, false};
  for (const auto& button : alert.buttons) words.buttons += said(button);
  return words;
}

QuestionSheet::Answered asCode(std::function<void(int)> answered) {
  return [answered = std::move(answered)](int index) { answered(FirstButton + index); };
}

}  // namespace

WindowSheets::WindowSheets(MainWindow& window, WindowContext& context)
    : window_(window), context_(context), greeting_(context, window) {}

WindowSheets::~WindowSheets() {
  qDeleteAll(window_.findChildren<Sheet*>(Qt::FindDirectChildrenOnly));
}

// One sheet of a kind.

template <class S>
S* WindowSheets::shown(const QString& key) const {
  for (S* sheet : window_.findChildren<S*>(key, Qt::FindDirectChildrenOnly)) {
    if (sheet->isVisible()) return sheet;  // closed ones wait for their end
  }
  return nullptr;
}

template <class S, class... Arguments>
S* WindowSheets::open(const QString& key, Arguments&&... arguments) {
  if (S* there = shown<S>(key)) {
    there->raise();
    there->activateWindow();
    return there;
  }
  auto* sheet = new S(std::forward<Arguments>(arguments)..., &window_);
  present(*sheet, key);
  return sheet;
}

void WindowSheets::present(Sheet& sheet, const QString& key) {
  sheet.setObjectName(key);
  sheet.open();
}

QuestionSheet* WindowSheets::ask(const QuestionSheet::Words& words,
                                 QuestionSheet::Answered answered) {
  auto* sheet = new QuestionSheet(words, std::move(answered), &window_);
  present(*sheet, "question");
  return sheet;
}

bool WindowSheets::isThere(const std::string& poolName) {
  if (context_.application.peer().poolNamed(poolName)) return true;
  const QString title = Zolvar::tr("The folder is not there.");
  if (context_.application.isWaitingForDrive(poolName)) {
    showProblem(title, Zolvar::tr("Its drive is not connected. Connect it, and try again."));
  } else if (const auto known = context_.operations.participants(poolName); !known) {
    showProblem(title, said(refusalText(known.error())));
  }
  return false;
}

// Folders.

void WindowSheets::shareFolder(const std::string& path) {
  auto* sheet = open<ShareSheet>("share", context_, path);
  QObject::connect(sheet, &ShareSheet::wasShared, &window_, &MainWindow::selectFolder,
                   Qt::UniqueConnection);
}

void WindowSheets::shareContacts() {
  auto* sheet = open<ShareContactsSheet>("shareContacts", context_);
  QObject::connect(sheet, &ShareContactsSheet::wasShared, &window_, &MainWindow::selectFolder,
                   Qt::UniqueConnection);
}

void WindowSheets::subscribe(const std::string& poolName) {
  if (isThere(poolName)) open<SubscribeSheet>(keyOf("subscribe", poolName), context_, poolName);
}

void WindowSheets::settings(const std::string& poolName) {
  if (isThere(poolName)) open<SettingsSheet>(keyOf("settings", poolName), context_, poolName);
}

void WindowSheets::unsubscribe(const std::string& poolName) {
  const auto act = [this, poolName] {
    const auto done = context_.operations.unsubscribe(poolName);
    if (!done) showProblem(Zolvar::tr("Unsubscribing failed."), said(refusalText(done.error())));
  };
  if (!context_.sheetsController.warnsBeforeDeactivating()) return act();
  QuestionSheet::Words words;
  words.heading = Zolvar::tr("Unsubscribe from '%1'?").arg(toQt(poolName));
  words.text = Zolvar::tr(
      "The files stay on this computer, but changes no longer come here or go to the others. You "
      "can subscribe again at any time.");
  words.buttons = {Zolvar::tr("&Unsubscribe")};
  words.close = Zolvar::tr("Cancel");
  auto* sheet = new QuestionSheet(words, {}, &window_);
  sheet->offerSilence();
  sheet->setAnswered([this, act, sheet](int /*index*/) {
    if (sheet->isSilenced()) context_.sheetsController.silenceDeactivationWarning();
    act();
  });
  present(*sheet, keyOf("unsubscribe", poolName));
}

void WindowSheets::remove(const std::string& poolName) {
  if (!isThere(poolName)) return;
  const auto act = [this, poolName] {
    context_.operations.remove(
        poolName, [this, alive = std::weak_ptr(alive_)](const Result<>& done) {
          if (done || alive.expired()) return;
          showProblem(Zolvar::tr("Removing failed."), said(refusalText(done.error())));
        });
  };
  const auto warning = context_.sheetsController.removePool(poolName);
  if (!warning) return act();
  ask({Zolvar::tr("Remove '%1'?").arg(toQt(poolName)),
       said(*warning),
       {Zolvar::tr("&Move to Trash")},
       Zolvar::tr("Cancel"),
       true,
       true},
      [act](int /*index*/) { act(); });
}

void WindowSheets::openFolder(const std::string& poolName) {
  if (!isThere(poolName)) return;
  const auto alert = context_.sheetsController.openPoolInFinder(poolName);
  if (!alert) return;
  if (alert->buttons.empty()) return subscribe(poolName);
  showAlert(*alert, [this, poolName, alert](int code) {
    if (context_.sheetsController.answerOpening(poolName, *alert, code)) subscribe(poolName);
  });
}

// Questions.

void WindowSheets::confirmSwitch(const std::string& path, const std::string& userId,
                                 const std::string& date, std::function<void()> proceed) {
  auto& controller = context_.sheetsController;
  const auto warning = controller.warningBeforeSwitching(path, userId, date);
  if (!warning) return proceed();
  QuestionSheet::Words words;
  words.heading = Zolvar::tr("Use this version?");
  words.text = said(*warning);
  words.buttons = {Zolvar::tr("&Use This Version")};
  words.close = Zolvar::tr("Cancel");
  auto* sheet = new QuestionSheet(words, {}, &window_);
  sheet->offerSilence();
  sheet->setAnswered([&controller, sheet, proceed = std::move(proceed)](int /*index*/) {
    if (sheet->isSilenced()) controller.silenceSwitchWarning();
    proceed();
  });
  present(*sheet, "switch");
}

void WindowSheets::confirm(const QString& title, const QString& text, const QString& button,
                           std::function<void()> proceed) {
  ask({title, text, {button}, Zolvar::tr("Cancel"), true, false},
      [proceed = std::move(proceed)](int /*index*/) { proceed(); });
}

void WindowSheets::showProblem(const QString& title, const QString& sentence) {
  ask({title, sentence, {Zolvar::tr("Continue")}, {}, true, false}, {});
}

// Panels.

void WindowSheets::preferences() { open<PreferencesPanel>("preferences", context_); }

void WindowSheets::about() { open<AboutPanel>("about", context_); }

void WindowSheets::quickStart() {
  auto* panel = open<QuickStartPanel>("quickStart");
  QObject::connect(panel, &QuickStartPanel::shareWanted, &window_,
                   [this, alive = std::weak_ptr(alive_)] {
                     if (!alive.expired()) shareFolder({});
                   });
}

void WindowSheets::releaseNotes() {
  open<ReleaseNotesPanel>("releaseNotes", context_.application.settings().version);
}

// What the engine asks.

void WindowSheets::askAboutPassword(const std::string& poolName, const PasswordFailureText& text,
                                    std::function<void(PasswordAnswer)> answered) {
  present(*new PasswordFailureSheet(text, std::move(answered), &window_),
          keyOf("password", poolName));
}

void WindowSheets::askAboutDeletion(const std::string& poolName, const Alert& alert,
                                    std::function<void(int)> answered) {
  withdrawDeletionAlert(poolName);
  const auto describe = [this, poolName](const std::string& path) {
    return context_.operations.describe(poolName, path);
  };
  auto* sheet = new DeletionSheet(alert, asCode(std::move(answered)), describe, &window_);
  const auto update = [this, sheet, poolName] {
    const auto pool = context_.application.peer().poolNamed(poolName);
    if (const auto question = pool ? context_.outcomes.openQuestion(*pool) : nullptr) {
      sheet->showFiles(question);
    }
  };
  QObject::connect(&context_.news, &FolderNews::changed, sheet, update);
  update();
  present(*sheet, keyOf("deletion", poolName));
}

void WindowSheets::withdrawDeletionAlert(const std::string& poolName) {
  if (auto* sheet = shown<DeletionSheet>(keyOf("deletion", poolName))) sheet->withdraw();
}

void WindowSheets::showAlert(const Alert& alert, std::function<void(int)> answered) {
  const QString key = keyOf("alert", alert.title);
  if (auto* earlier = shown<QuestionSheet>(key)) earlier->withdraw();
  present(*new QuestionSheet(wordsOf(alert), asCode(std::move(answered)), &window_), key);
}

}  // namespace zolvar
