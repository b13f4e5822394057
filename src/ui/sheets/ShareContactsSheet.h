#pragma once

#include "ui/sheets/Sheet.h"

class QLineEdit;
class QListWidget;

namespace zolvar {

/// Shares a group of the address book: which one, and with what password. Main thread.
class ShareContactsSheet : public Sheet {
  Q_OBJECT

 public:
  ShareContactsSheet(WindowContext& context, QWidget* window);
  void accept() override;

 Q_SIGNALS:
  void wasShared(const std::string& poolName);

 private:
  [[nodiscard]] std::string group() const;

  WindowContext& context_;
  QListWidget* groups_;
  QLineEdit* password_;
  NoteLabel* note_;
  QPushButton* share_;
};

}  // namespace zolvar
