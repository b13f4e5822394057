#pragma once

#include <QObject>
#include <QString>
#include <set>
#include <string>

#include "app/ApplicationObserver.h"
#include "platform/RunLoop.h"

namespace zolvar {

class Application;

/// What happens in the application as signals for the parts of the window. Changes are gathered for
/// a moment, so that a long copy, which changes a folder many times a second, costs the window
/// little. Observes from its making to its destruction; the application outlives it. Main thread.
class FolderNews : public QObject, public ApplicationObserver {
  Q_OBJECT

 public:
  explicit FolderNews(Application& application);
  ~FolderNews() override;

  /// Why others cannot fetch from here now; empty while they can.
  [[nodiscard]] const std::string& serverTrouble() const { return serverTrouble_; }
  /// Tells now what is gathered.
  void flush();

 Q_SIGNALS:
  /// Some folders changed (their names); `isList`: folders came or went.
  void changed(const std::set<std::string>& poolNames, bool isList);
  /// One sentence that a person should know; an empty name: about the program.
  void warned(const std::string& poolName, const std::string& sentence);
  void serverChanged(bool running, const std::string& trouble);

 private:
  void syncDidStart(KDFilePool& pool, const KDParticipant& participant) override;
  void syncDidEnd(const SyncReport& report) override;
  void poolDidChange(KDFilePool& pool) override;
  void poolListDidChange() override;
  void warning(const std::string& poolName, const std::string& sentence) override;
  void serverDidChange(bool running, const std::string& trouble) override;
  void gather(const KDFilePool* pool);

  Application& application_;
  std::set<std::string> changed_;
  bool isListChanged_ = false;
  std::string serverTrouble_;
  RunLoop::Id timer_ = 0;
};

}  // namespace zolvar
