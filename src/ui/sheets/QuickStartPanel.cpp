#include "ui/sheets/QuickStartPanel.h"

#include <QGridLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/Icons.h"
#include "ui/Texts.h"
#include "ui/sheets/Picture.h"

namespace zolvar {
namespace {

constexpr double PictureLines = 6;
constexpr int StepColumns = 26;  // characters of an average width

}  // namespace

QuickStartPanel::QuickStartPanel(QWidget* window) : Sheet(window) {
  introduce({}, Zolvar::tr("First Steps"), Zolvar::tr("Folders in step, in three steps"), {});
  const struct {
    const char* picture;
    QString title;
    QString text;
  } steps[] = {
      {"quickstart-share", Zolvar::tr("Share"),
       Zolvar::tr("Choose a folder, or drag it onto the window. Everybody on this network who runs "
                  "Zolvar sees it by its name.")},
      {"quickstart-subscribe", Zolvar::tr("Subscribe"),
       Zolvar::tr("On the other computers, select the folder in the list and subscribe to it. Its "
                  "files arrive.")},
      {"quickstart-together", Zolvar::tr("Work together"),
       Zolvar::tr("Everybody's changes travel by themselves. When two people change one file at "
                  "once, both versions are kept and you choose.")},
  };
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(fontMetrics().height() * 3 / 2);
  int column = 0;
  for (const auto& step : steps) {
    auto* title =
        new QLabel(Zolvar::tr("%1. %2").arg(QLocale().toString(column + 1), step.title), this);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    auto* text = new QLabel(step.text, this);
    for (QLabel* label : {title, text}) {
      label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
      label->setWordWrap(true);
    }
    text->setMinimumWidth(fontMetrics().averageCharWidth() * StepColumns);
    grid->addWidget(new Picture(ownIcon(step.picture), PictureLines, this), 0, column,
                    Qt::AlignCenter);
    grid->addWidget(title, 1, column);
    grid->addWidget(text, 2, column);
    grid->setColumnStretch(column, 1);
    ++column;
  }
  grid->setRowStretch(2, 1);
  body().addLayout(grid);
  auto* share = addButton(Zolvar::tr("&Share a Folder…"), QDialogButtonBox::AcceptRole);
  share->setDefault(true);
  share->setFocus();
  addButton(Zolvar::tr("Close"), QDialogButtonBox::RejectRole);
  connect(this, &QDialog::accepted, this, &QuickStartPanel::shareWanted);
}

}  // namespace zolvar
