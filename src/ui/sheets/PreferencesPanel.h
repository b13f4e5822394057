#pragma once

#include "app/Preferences.h"
#include "ui/sheets/Sheet.h"

class QCheckBox;
class QComboBox;
class QListWidget;
class QSpinBox;
class QTabWidget;

namespace zolvar {

class AmountEdit;
class NoteLabel;

/// What a person sets for the whole program, on a few pages; written when it is confirmed. Main
/// thread.
class PreferencesPanel : public Sheet {
  Q_OBJECT

 public:
  PreferencesPanel(WindowContext& context, QWidget* window);
  /// Pages are general, transfers and notices.
  void showPage(int index);
  void accept() override;

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  QWidget* generalPage();
  QWidget* transfersPage();
  QWidget* noticesPage();
  void fill(const Preferences& preferences);
  [[nodiscard]] Preferences shown() const;

  WindowContext& context_;
  Preferences before_;
  QTabWidget* pages_;
  QComboBox* language_;
  QCheckBox* startsAtLogin_;
  QCheckBox* syncsByItself_;
  QCheckBox* isQuick_;
  AmountEdit* limitOut_;
  AmountEdit* limitIn_;
  QSpinBox* versionsDays_;
  AmountEdit* versionsSize_;
  QListWidget* notices_;
  NoteLabel* noticesHint_;
  QCheckBox* warnsAlways_;
  NoteLabel* note_;
};

}  // namespace zolvar
