#include "ui/PlainSheets.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

#include "app/Operations.h"
#include "app/SheetsController.h"
#include "ui/Texts.h"

namespace zolvar {

PlainSheets::~PlainSheets() {
  for (const auto& [name, box] : deletionAlerts_) delete box.data();
}

QMessageBox* PlainSheets::ask(const QString& title, const QString& text, const QStringList& buttons,
                              std::function<void(int)> chosen) {
  auto* box = new QMessageBox(&window_);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setWindowModality(Qt::WindowModal);
  box->setText(title);
  box->setInformativeText(text);
  QList<QAbstractButton*> added;
  for (const QString& button : buttons) {
    added.append(box->addButton(button, QMessageBox::AcceptRole));
  }
  box->setDefaultButton(qobject_cast<QPushButton*>(added.value(0)));
  QObject::connect(box, &QDialog::finished, box,
                   [box, added, chosen = std::move(chosen)](int /*result*/) {
                     chosen(static_cast<int>(added.indexOf(box->clickedButton())));
                   });
  box->open();
  return box;
}

void PlainSheets::showProblem(const QString& title, const QString& sentence) {
  ask(title, sentence, {Zolvar::tr("OK")}, [](int) {});
}

void PlainSheets::confirm(const QString& title, const QString& text, const QString& button,
                          std::function<void()> proceed) {
  ask(title, text, {button, Zolvar::tr("Cancel")}, [proceed = std::move(proceed)](int index) {
    if (index == 0) proceed();
  });
}

void PlainSheets::shareFolder(const std::string& path) {
  std::string folder = path;
  if (folder.empty()) {
    folder =
        QFileDialog::getExistingDirectory(&window_, Zolvar::tr("Share a Folder")).toStdString();
  }
  if (folder.empty()) return;
  context_.operations.share(folder, {}, [this](const Result<>& shared) {
    if (!shared) {
      showProblem(Zolvar::tr("The folder cannot be shared."), said(refusalText(shared.error())));
    }
  });
}

void PlainSheets::subscribe(const std::string& poolName) {
  context_.operations.subscribe(poolName, {}, {}, [this](const Result<>& done) {
    if (!done) showProblem(Zolvar::tr("Subscribing failed."), said(refusalText(done.error())));
  });
}

void PlainSheets::unsubscribe(const std::string& poolName) {
  const auto done = context_.operations.unsubscribe(poolName);
  if (!done) showProblem(Zolvar::tr("Unsubscribing failed."), said(refusalText(done.error())));
}

void PlainSheets::remove(const std::string& poolName) {
  confirm(Zolvar::tr("Remove the folder?"), said(removePoolWarning(poolName)), Zolvar::tr("Remove"),
          [this, poolName] {
            context_.operations.remove(poolName, [this](const Result<>& done) {
              if (!done) {
                showProblem(Zolvar::tr("Removing failed."), said(refusalText(done.error())));
              }
            });
          });
}

void PlainSheets::settings(const std::string& /*poolName*/) {}

void PlainSheets::openFolder(const std::string& poolName) {
  auto& controller = context_.sheetsController;
  const auto alert = controller.openPoolInFinder(poolName);
  if (!alert) return;
  if (alert->buttons.empty()) return subscribe(poolName);
  showAlert(*alert, [this, poolName, alert](int code) {
    if (context_.sheetsController.answerOpening(poolName, *alert, code)) subscribe(poolName);
  });
}

void PlainSheets::confirmSwitch(const std::string& path, const std::string& userId,
                                const std::string& date, std::function<void()> proceed) {
  const auto warning = context_.sheetsController.warningBeforeSwitching(path, userId, date);
  if (!warning) return proceed();
  confirm(Zolvar::tr("Use this version?"), said(*warning), Zolvar::tr("Use This Version"),
          std::move(proceed));
}

void PlainSheets::about() { QMessageBox::aboutQt(&window_); }

void PlainSheets::askAboutPassword(const std::string& /*poolName*/, const PasswordFailureText& text,
                                   std::function<void(PasswordAnswer)> answered) {
  QStringList buttons;
  for (const auto& resolution : text.resolutions) buttons.append(said(resolution));
  ask(said(text.message), said(text.informative), buttons,
      [answered = std::move(answered)](int index) {
        answered(static_cast<PasswordAnswer>(index));
      });
}

void PlainSheets::askAboutDeletion(const std::string& poolName, const Alert& alert,
                                   std::function<void(int)> answered) {
  withdrawDeletionAlert(poolName);
  QStringList buttons;
  for (const auto& button : alert.buttons) buttons.append(said(button));
  deletionAlerts_[poolName] = ask(said(alert.title), said(alert.text), buttons,
                                  [answered = std::move(answered)](int index) {
                                    if (index >= 0) answered(FirstButton + index);
                                  });
}

void PlainSheets::withdrawDeletionAlert(const std::string& poolName) {
  const auto found = deletionAlerts_.find(poolName);
  if (found == deletionAlerts_.end()) return;
  delete found->second.data();
  deletionAlerts_.erase(found);
}

void PlainSheets::showAlert(const Alert& alert, std::function<void(int)> answered) {
  QStringList buttons;
  for (const auto& button : alert.buttons) buttons.append(said(button));
  ask(said(alert.title), said(alert.text), buttons, [answered = std::move(answered)](int index) {
    if (index >= 0) answered(FirstButton + index);
  });
}

}  // namespace zolvar
