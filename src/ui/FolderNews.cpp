#include "ui/FolderNews.h"

#include <utility>

#include "app/Application.h"
#include "platform/Platform.h"
#include "platform/RunLoop.h"

namespace zolvar {
namespace {

constexpr double GatheringTime = 0.1;  // seconds

}  // namespace

FolderNews::FolderNews(Application& application) : application_(application) {
  application_.addObserver(*this);
}

FolderNews::~FolderNews() {
  application_.platform().runLoop.cancel(timer_);
  application_.removeObserver(*this);
}

void FolderNews::gather(const KDFilePool* pool) {
  if (pool != nullptr) {
    changed_.insert(pool->name());
  } else {
    isListChanged_ = true;
  }
  if (timer_ != 0) return;
  timer_ = application_.platform().runLoop.after(GatheringTime, [this] {
    timer_ = 0;
    flush();
  });
}

void FolderNews::flush() {
  if (changed_.empty() && !isListChanged_) return;
  const auto names = std::exchange(changed_, {});
  Q_EMIT changed(names, std::exchange(isListChanged_, false));
}

void FolderNews::syncDidStart(KDFilePool& pool, const KDParticipant& /*participant*/) {
  gather(&pool);
}

void FolderNews::syncDidEnd(const SyncReport& report) { gather(&report.pool); }

void FolderNews::poolDidChange(KDFilePool& pool) { gather(&pool); }

void FolderNews::poolListDidChange() { gather(nullptr); }

void FolderNews::warning(const std::string& poolName, const std::string& sentence) {
  Q_EMIT warned(poolName, sentence);
}

void FolderNews::serverDidChange(bool running, const std::string& trouble) {
  serverTrouble_ = trouble;
  Q_EMIT serverChanged(running, trouble);
}

}  // namespace zolvar
