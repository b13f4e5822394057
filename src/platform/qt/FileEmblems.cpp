#include "platform/qt/FileEmblems.h"

#include <gio/gio.h>

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace zolvar {
namespace {

constexpr const char* Attribute = "metadata::emblems";
constexpr const char* Emblem = "zolvar-conflict";  // drawn as the icon "emblem-zolvar-conflict"

struct ReleaseObject {
  void operator()(void* object) const { g_object_unref(object); }
};
using File = std::unique_ptr<GFile, ReleaseObject>;

/// Whether the session keeps metadata for the file.
bool hasMetadata(GFile* file) {
  GFileAttributeInfoList* namespaces = g_file_query_writable_namespaces(file, nullptr, nullptr);
  if (namespaces == nullptr) return false;
  const bool has = g_file_attribute_info_list_lookup(namespaces, "metadata") != nullptr;
  g_file_attribute_info_list_unref(namespaces);
  return has;
}

std::vector<std::string> emblemsOf(GFile* file) {
  std::vector<std::string> emblems;
  const std::unique_ptr<GFileInfo, ReleaseObject> info(
      g_file_query_info(file, Attribute, G_FILE_QUERY_INFO_NOFOLLOW_SYMLINKS, nullptr, nullptr));
  if (!info) return emblems;
  char** names = g_file_info_get_attribute_stringv(info.get(), Attribute);
  for (; names != nullptr && *names != nullptr; ++names) emblems.emplace_back(*names);
  return emblems;
}

void setEmblems(GFile* file, std::vector<std::string>& emblems) {
  std::vector<char*> names;
  for (auto& emblem : emblems) names.push_back(emblem.data());
  names.push_back(nullptr);
  const bool isUnset = emblems.empty();
  // What fails leaves a file without its emblem, which is all there is to do about it.
  (void)g_file_set_attribute(
      file, Attribute, isUnset ? G_FILE_ATTRIBUTE_TYPE_INVALID : G_FILE_ATTRIBUTE_TYPE_STRINGV,
      isUnset ? nullptr : static_cast<void*>(names.data()), G_FILE_QUERY_INFO_NOFOLLOW_SYMLINKS,
      nullptr, nullptr);
}

void setMark(const std::string& path, bool isInConflict) {
  const File file(g_file_new_for_path(path.c_str()));
  if (!hasMetadata(file.get())) return;
  auto emblems = emblemsOf(file.get());
  const auto at = std::find(emblems.begin(), emblems.end(), Emblem);
  if ((at != emblems.end()) == isInConflict) return;
  if (isInConflict) {
    emblems.emplace_back(Emblem);
  } else {
    emblems.erase(at);
  }
  setEmblems(file.get(), emblems);
}

}  // namespace

/// What is to be marked, the newest word for each path. The thread keeps it alive.
class FileEmblems::Worker : public std::enable_shared_from_this<Worker> {
 public:
  void add(const std::string& path, bool isInConflict) {
    const std::lock_guard lock(mutex_);
    waiting_[path] = isInConflict;
    changed_.notify_one();
    if (std::exchange(hasThread_, true)) return;
    std::thread([self = shared_from_this()] { self->run(); }).detach();
  }
  /// A thread that hangs in a call is left to itself.
  void end() {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
    changed_.notify_one();
  }

 private:
  void run() {
    std::unique_lock lock(mutex_);
    while (true) {
      changed_.wait(lock, [this] { return isEnding_ || !waiting_.empty(); });
      if (isEnding_) return;
      const auto next = waiting_.extract(waiting_.begin());
      lock.unlock();
      setMark(next.key(), next.mapped());
      lock.lock();
    }
  }

  std::mutex mutex_;  ///< guards all below
  std::condition_variable changed_;
  std::map<std::string, bool> waiting_;
  bool hasThread_ = false;
  bool isEnding_ = false;
};

FileEmblems::FileEmblems() : worker_(std::make_shared<Worker>()) {}

FileEmblems::~FileEmblems() { worker_->end(); }

void FileEmblems::mark(const std::string& absolutePath, bool isInConflict) const {
  worker_->add(absolutePath, isInConflict);
}

}  // namespace zolvar
