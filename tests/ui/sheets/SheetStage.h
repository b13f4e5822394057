#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include "app/Outcomes.h"
#include "ui/WindowFrontEnd.h"
#include "ui/WindowStage.h"
#include "ui/sheets/NoteLabel.h"
#include "ui/sheets/WindowSheets.h"

namespace zolvar {

/// Ann's window with the real sheets on it.
class SheetStage : public WindowStage {
 protected:
  ~SheetStage() override {
    ann.app->outcomes().setFrontEnd(nullptr);
    if (window) window->setSheets(nullptr);
    real.reset();
  }

  void openSheets() {
    openWindow();
    real = std::make_unique<WindowSheets>(*window, *context);
    window->setSheets(real.get());
    frontEnd = std::make_unique<WindowFrontEnd>(*window, *real);
    ann.app->outcomes().setFrontEnd(frontEnd.get());
  }
  /// The open sheet of that class; null when there is none.
  template <class S>
  S* sheet() {
    for (S* one : window->template findChildren<S*>(Qt::FindDirectChildrenOnly)) {
      if (one->isVisible()) return one;
    }
    return nullptr;
  }
  /// The button, without its mnemonic, that is on the sheet.
  template <class S>
  QAbstractButton* button(const QString& text) {
    S* found = sheet<S>();
    if (found == nullptr) throw std::runtime_error("no sheet for " + text.toStdString());
    for (auto* one : found->template findChildren<QAbstractButton*>()) {
      if (one->text().remove('&') == text) return one;
    }
    throw std::runtime_error("no button " + text.toStdString());
  }
  template <class S>
  void press(const QString& text) {
    QTest::mouseClick(button<S>(text), Qt::LeftButton);
    settle(0.5);
  }
  /// What the sheet says, all of it.
  template <class S>
  std::string text() {
    std::string all;
    for (const auto* label : sheet<S>()->template findChildren<QLabel*>()) {
      if (label->isVisible()) all += label->text().toStdString() + "\n";
    }
    return all;
  }
  /// The line edit of that accessible name, cleared and typed into.
  template <class S>
  void type(const QString& name, const QString& typed) {
    for (auto* edit : sheet<S>()->template findChildren<QLineEdit*>()) {
      if (edit->accessibleName() != name) continue;
      edit->setFocus();
      edit->selectAll();
      edit->insert({});
      // What has a line's end is pasted.
      return typed.contains('\n') ? edit->insert(typed) : QTest::keyClicks(edit, typed);
    }
    throw std::runtime_error("no field " + name.toStdString());
  }
  std::string setting(const std::string& key) {
    return ann.platform.defaults.string(key).value_or("(unset)");
  }

  std::unique_ptr<WindowSheets> real;
  std::unique_ptr<WindowFrontEnd> frontEnd;
};

}  // namespace zolvar
