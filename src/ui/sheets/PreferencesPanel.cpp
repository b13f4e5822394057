#include "ui/sheets/PreferencesPanel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QFormLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QShowEvent>
#include <QSpinBox>
#include <QTabWidget>

#include "ui/Icons.h"
#include "ui/Languages.h"
#include "ui/Texts.h"
#include "ui/WindowContext.h"
#include "ui/sheets/AmountEdit.h"
#include "ui/sheets/NoteLabel.h"

namespace zolvar {
namespace {

constexpr unsigned long LeastLimit = 10;         // KB/s
constexpr unsigned long MostLimit = 1000000;     // KB/s
constexpr unsigned long MostVersions = 1 << 20;  // megabytes
constexpr int MostDays = 3650;
constexpr int NoticeRows = 5;

NoteLabel* hint(const QString& text, QWidget* parent) {
  auto* label = new NoteLabel(parent);
  label->say(text);
  return label;
}

void addAmount(QFormLayout& form, const QString& text, AmountEdit& edit) {
  auto* label = new QLabel(text, &edit);
  label->setBuddy(&edit.number());
  form.addRow(label, &edit);
}

}  // namespace

PreferencesPanel::PreferencesPanel(WindowContext& context, QWidget* window)
    : Sheet(window), context_(context) {
  introduce({}, Zolvar::tr("Preferences"), {}, {});
  pages_ = new QTabWidget(this);
  pages_->addTab(generalPage(), Zolvar::tr("&General"));
  pages_->addTab(transfersPage(), Zolvar::tr("&Transfers"));
  pages_->addTab(noticesPage(), Zolvar::tr("&Notices"));
  note_ = new NoteLabel(this);
  body().addWidget(pages_);
  body().addWidget(note_);
  addButton(Zolvar::tr("&Save"), QDialogButtonBox::AcceptRole)->setDefault(true);
  addCancel();
  before_ = Preferences::read(context.application, context.operations);
  fill(before_);
  language_->setFocus();
}

QWidget* PreferencesPanel::generalPage() {
  auto* page = new QWidget(this);
  language_ = new QComboBox(page);
  language_->addItem(Zolvar::tr("Same as the system"), QString());
  for (const auto& language : offeredLanguages()) {
    language_->addItem(language.ownName, toQt(language.code));
  }
  startsAtLogin_ = new QCheckBox(Zolvar::tr("Start Zolvar at &login"), page);
  syncsByItself_ = new QCheckBox(Zolvar::tr("&Keep folders in step by themselves"), page);
  isQuick_ = new QCheckBox(Zolvar::tr("&Quick pace"), page);
  auto* form = new QFormLayout(page);
  form->addRow(Zolvar::tr("L&anguage:"), language_);
  form->addRow(QString(), startsAtLogin_);
  form->addRow(QString(), syncsByItself_);
  form->addRow(QString(), hint(Zolvar::tr("While this is off, all folders are paused: nothing is "
                                          "fetched, and nothing is given to others."),
                               page));
  form->addRow(QString(), isQuick_);
  form->addRow(QString(), hint(Zolvar::tr("Changes travel within seconds instead of a minute or "
                                          "two, for a little more work. Takes effect at the next "
                                          "start."),
                               page));
  return page;
}

QWidget* PreferencesPanel::transfersPage() {
  auto* page = new QWidget(this);
  const auto limit = [page](const QString& name) {
    return new AmountEdit({name, Zolvar::tr("KB/s"), Zolvar::tr("MB/s"), Zolvar::tr("No limit"),
                           LeastLimit, MostLimit},
                          page);
  };
  limitOut_ = limit(Zolvar::tr("Most that is sent"));
  limitIn_ = limit(Zolvar::tr("Most that is fetched"));
  versionsDays_ = new QSpinBox(page);
  versionsDays_->setRange(0, MostDays);
  versionsDays_->setSpecialValueText(Zolvar::tr("Keep nothing"));
  versionsDays_->setSuffix(Zolvar::tr(" days"));
  versionsSize_ = new AmountEdit({Zolvar::tr("Most that is kept"), Zolvar::tr("MB"),
                                  Zolvar::tr("GB"), Zolvar::tr("Keep nothing"), 0, MostVersions},
                                 page);
  auto* form = new QFormLayout(page);
  addAmount(*form, Zolvar::tr("&Send at most:"), *limitOut_);
  addAmount(*form, Zolvar::tr("&Fetch at most:"), *limitIn_);
  form->addRow(QString(), hint(Zolvar::tr("For each user who fetches or is fetched from."), page));
  form->addRow(Zolvar::tr("Keep &versions for:"), versionsDays_);
  addAmount(*form, Zolvar::tr("For each folder at &most:"), *versionsSize_);
  form->addRow(QString(), hint(Zolvar::tr("What others' changes replace in your folders is kept so "
                                          "that you can have it back."),
                               page));
  return page;
}

QWidget* PreferencesPanel::noticesPage() {
  auto* page = new QWidget(this);
  notices_ = new QListWidget(page);
  notices_->setTextElideMode(Qt::ElideMiddle);
  notices_->setMinimumHeight(NoticeRows * fontMetrics().height() * 3 / 2);
  warnsAlways_ = new QCheckBox(Zolvar::tr("Show all &warnings again"), page);
  auto* label = new QLabel(Zolvar::tr("Show notices about these &folders:"), page);
  label->setBuddy(notices_);
  auto* layout = new QVBoxLayout(page);
  layout->addWidget(label);
  layout->addWidget(notices_, 1);
  layout->addWidget(noticesHint_ = hint(Zolvar::tr("Conflicts are shown either way."), page));
  layout->addWidget(warnsAlways_);
  return page;
}

void PreferencesPanel::showEvent(QShowEvent* event) {
  Sheet::showEvent(event);
  if (event->spontaneous()) return;
  // Every page's notes learn their widths, or the highest page would be too high.
  const int shown = pages_->currentIndex();
  QWidget* const focus = focusWidget();
  for (int page = 0; page < pages_->count(); ++page) {
    pages_->setCurrentIndex(page);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
  }
  pages_->setCurrentIndex(shown);
  if (focus != nullptr) focus->setFocus();
  fit();
}

void PreferencesPanel::showPage(int index) { pages_->setCurrentIndex(index); }

void PreferencesPanel::fill(const Preferences& preferences) {
  language_->setCurrentIndex(std::max(0, language_->findData(toQt(preferences.language))));
  startsAtLogin_->setChecked(preferences.startsAtLogin);
  syncsByItself_->setChecked(preferences.syncsByItself);
  isQuick_->setChecked(preferences.isQuick);
  limitOut_->setValue(preferences.limitOut);
  limitIn_->setValue(preferences.limitIn);
  versionsDays_->setValue(static_cast<int>(preferences.versionsDays));
  versionsSize_->setValue(preferences.versionsMegabytes);
  for (const auto& [name, uses] : preferences.notices) {
    auto* item = new QListWidgetItem(toQt(name), notices_);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    item->setCheckState(uses ? Qt::Checked : Qt::Unchecked);
  }
  if (preferences.notices.empty()) {
    notices_->setEnabled(false);
    noticesHint_->say(Zolvar::tr("You are not subscribed to any folder yet."));
  }
  warnsAlways_->setVisible(!preferences.warnsAlways);
}

Preferences PreferencesPanel::shown() const {
  Preferences now = before_;
  now.language = language_->currentData().toString().toStdString();
  now.startsAtLogin = startsAtLogin_->isChecked();
  now.syncsByItself = syncsByItself_->isChecked();
  now.isQuick = isQuick_->isChecked();
  now.limitOut = limitOut_->value();
  now.limitIn = limitIn_->value();
  now.versionsDays = static_cast<unsigned long>(versionsDays_->value());
  now.versionsMegabytes = versionsSize_->value();
  for (int row = 0; row < notices_->count(); ++row) {
    const QListWidgetItem* item = notices_->item(row);
    now.notices[item->text().toStdString()] = item->checkState() == Qt::Checked;
  }
  now.warnsAlways = before_.warnsAlways || warnsAlways_->isChecked();
  return now;
}

void PreferencesPanel::accept() {
  const auto saved = shown().save(before_, context_.application, context_.operations);
  if (saved) return Sheet::accept();
  // What could be written is not written once more.
  before_ = Preferences::read(context_.application, context_.operations);
  note_->say(said(refusalText(saved.error())), NoteLabel::Weight::Error);
}

}  // namespace zolvar
