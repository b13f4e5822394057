#include "ui/sheets/DeletionSheet.h"

#include <QAbstractListModel>
#include <QLabel>
#include <QListView>
#include <QVBoxLayout>
#include <utility>

#include "app/OutcomeTexts.h"
#include "app/VisibleFiles.h"
#include "pool/PoolSnapshot.h"
#include "ui/Texts.h"
#include "ui/sheets/NoteLabel.h"

namespace zolvar {
namespace {

constexpr std::size_t Few = 3;  // files that a sentence can name
constexpr int Rows = 8;

QuestionSheet::Words wordsOf(const Alert& alert) {
  QuestionSheet::Words words{
      said(alert.title), said(alert.text), {}, Zolvar::tr("&Later"), true, false};
  for (const auto& button : alert.buttons) words.buttons += said(button);
  return words;
}

}  // namespace

/// Says each file only when it is seen: there may be a hundred thousand.
class DeletionSheet::Files : public QAbstractListModel {
 public:
  Files(std::function<std::string(const std::string&)> describe, QObject* parent)
      : QAbstractListModel(parent), describe_(std::move(describe)) {}

  /// `paths`: of the question.
  void show(const std::shared_ptr<const DeleteQuestion>& question,
            std::vector<std::string_view> paths) {
    beginResetModel();
    question_ = question;
    paths_ = std::move(paths);
    endResetModel();
  }
  [[nodiscard]] const auto& question() const { return question_; }
  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(paths_.size());
  }
  QVariant data(const QModelIndex& index, int role) const override {
    if (role != Qt::DisplayRole || !index.isValid()) return {};
    return toQt(describe_(std::string(paths_[static_cast<std::size_t>(index.row())])));
  }

 private:
  std::function<std::string(const std::string&)> describe_;
  std::shared_ptr<const DeleteQuestion> question_;
  std::vector<std::string_view> paths_;
};

DeletionSheet::DeletionSheet(const Alert& alert, Answered answered,
                             std::function<std::string(const std::string& path)> describe,
                             QWidget* window)
    : QuestionSheet(wordsOf(alert), std::move(answered), window) {
  files_ = new Files(std::move(describe), this);
  list_ = new QListView(this);
  list_->setModel(files_);
  list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  list_->setSelectionMode(QAbstractItemView::NoSelection);
  list_->setUniformItemSizes(true);
  list_->setTextElideMode(Qt::ElideMiddle);
  list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  label_ = new QLabel(Zolvar::tr("The &files:"), this);
  label_->setBuddy(list_);
  list_->hide();
  label_->hide();
  auto* hint = new NoteLabel(this);
  hint->say(
      Zolvar::tr("Re-Get brings the files back here from the others. Delete Everywhere moves "
                 "them to the Trash of everybody who has them."));
  body().addWidget(label_);
  body().addWidget(list_, 1);
  body().addWidget(hint);
}

void DeletionSheet::showFiles(const std::shared_ptr<const DeleteQuestion>& question) {
  if (question == files_->question()) return;
  auto files = visibleOfSorted(question->paths);
  if (files.size() <= Few && list_->isHidden()) return;
  const int rows = std::min(static_cast<int>(files.size()), Rows);
  files_->show(question, std::move(files));
  list_->setMinimumHeight(rows * list_->sizeHintForRow(0) + 2 * list_->frameWidth());
  list_->show();
  label_->show();
}

}  // namespace zolvar
