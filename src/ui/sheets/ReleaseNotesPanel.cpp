#include "ui/sheets/ReleaseNotesPanel.h"

#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>
#include <cmath>
#include <memory>

#include "ui/Icons.h"
#include "ui/Texts.h"

namespace zolvar {
namespace {

constexpr int Columns = 50;  // characters of an average width

/// Newest first.
QStringList news() {
  return {
      Zolvar::tr("The window shows every folder, who has it, what is missing and what conflicts, "
                 "and settles conflicts for several files at once. A choice can be undone."),
      Zolvar::tr("The version tree draws who changed a file, when, and from which version."),
      Zolvar::tr("Folders can be paused for an hour or until you resume them."),
      Zolvar::tr("What others' changes replace in your folders is kept for a month, so that you "
                 "can have it back."),
      Zolvar::tr("A file .zolvarignore at the top of a folder names what stays out of it."),
  };
}

}  // namespace

ReleaseNotesPanel::ReleaseNotesPanel(const std::string& version, QWidget* window) : Sheet(window) {
  introduce(ownIcon("zolvar"), Zolvar::tr("Release Notes"),
            Zolvar::tr("New in Zolvar %1").arg(toQt(version)), {});
  auto* text = new QTextBrowser(this);
  text->setFrameShape(QFrame::NoFrame);
  text->viewport()->setAutoFillBackground(false);
  text->setAccessibleName(windowTitle());
  QString list;
  for (const QString& item : news()) list += "<li>" + item.toHtmlEscaped() + "</li>";
  text->document()->setIndentWidth(fontMetrics().averageCharWidth() * 2);
  text->document()->setDocumentMargin(0);
  text->setHtml("<ul style=\"margin-left: 0; -qt-list-indent: 1\">" + list + "</ul>");
  const std::unique_ptr<QTextDocument> measured(text->document()->clone());
  measured->setDefaultFont(font());
  measured->setTextWidth(fontMetrics().averageCharWidth() * Columns);
  text->setMinimumHeight(static_cast<int>(std::ceil(measured->size().height())));
  text->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
  body().addWidget(text, 1);
  auto* close = addButton(Zolvar::tr("Close"), QDialogButtonBox::RejectRole);
  close->setDefault(true);
  close->setFocus();
}

}  // namespace zolvar
