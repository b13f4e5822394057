#pragma once

#include <QDialog>
#include <QDialogButtonBox>
#include <QPointer>
#include <functional>
#include <string>

#include "app/Operations.h"

class QFormLayout;
class QLabel;
class QVBoxLayout;

namespace zolvar {

class NoteLabel;
struct WindowContext;

/// What all sheets and panels have in common: modal to their window only, a picture, a heading, a
/// text, then what each adds, and the buttons; as high as its texts need at any width. It deletes
/// itself when it is closed. The context outlives it. Main thread.
class Sheet : public QDialog {
  Q_OBJECT

 public:
  explicit Sheet(QWidget* window);

 protected:
  /// `title` is the window's, `heading` stands above the text; each may be empty.
  void introduce(const QIcon& picture, const QString& title, const QString& heading,
                 const QString& text);
  /// Where a sheet adds its own, below the text.
  [[nodiscard]] QVBoxLayout& body() { return *body_; }
  /// A form in the body.
  QFormLayout* addForm();
  QPushButton* addButton(const QString& text, QDialogButtonBox::ButtonRole role);
  QPushButton* addCancel();
  [[nodiscard]] QDialogButtonBox& buttons() { return *buttons_; }
  /// As high as the texts need now.
  void fit();

  /// A person's doing takes time: nothing can be changed meanwhile, but the sheet can be closed.
  void wait();
  /// To hand to what takes time: closes the sheet and calls `then`, or says in `note` why it was
  /// refused. Is told in a sheet of its own, with that title, if this one was closed meanwhile.
  Operations::Done ending(WindowContext& context, NoteLabel& note, const QString& title,
                          std::function<void()> then = {});
  /// Closes when the folder is gone from the list.
  void closeWithFolder(WindowContext& context, const std::string& poolName);

  bool event(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void grow();

  QWidget* content_;
  QVBoxLayout* side_;
  QLabel* heading_;
  QLabel* text_;
  QVBoxLayout* body_;
  QDialogButtonBox* buttons_;
  QPointer<QWidget> focus_;  ///< before the wait
  int fitted_ = -1;          ///< the height that fit its texts; another one is a person's choice
};

}  // namespace zolvar
