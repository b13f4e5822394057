#pragma once

#include "app/SheetsController.h"
#include "ui/sheets/Sheet.h"

class QLineEdit;

namespace zolvar {

class FolderPlaceEdit;

/// What the sheets have in common that say where a folder lies, and with what password. The context
/// outlives it. Main thread.
class PlaceSheet : public Sheet {
  Q_OBJECT

 public:
  PlaceSheet(WindowContext& context, QWidget* window);

 protected:
  /// The form and the buttons, once the controller knows its sheet. `placeholder`: of the password;
  /// `hint`: about it, may be empty; `button`: confirms while the place is acceptable.
  void fill(const QString& placeholder, const QString& hint, const QString& button);
  [[nodiscard]] WindowContext& context() { return context_; }
  [[nodiscard]] SheetsController& controller() { return controller_; }
  [[nodiscard]] FolderPlaceEdit& place() { return *place_; }
  [[nodiscard]] QLineEdit& password() { return *password_; }

 private:
  WindowContext& context_;
  SheetsController controller_;
  FolderPlaceEdit* place_;
  QLineEdit* password_;
};

}  // namespace zolvar
