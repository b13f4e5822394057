#include "ui/sheets/Greeting.h"

#include <QEvent>
#include <QPointer>
#include <QWidget>
#include <algorithm>

#include "app/Application.h"
#include "app/Operations.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "ui/FolderNews.h"
#include "ui/Sheets.h"

namespace zolvar {

Greeting::Greeting(WindowContext& context, QWidget& window) : context_(context), window_(window) {
  // The first version of all is no news.
  const std::string known = context.platform.defaults.string("KnownVersion").value_or("");
  isNewVersion_ = !known.empty() && known != context.application.settings().version;
  connect(&context.news, &FolderNews::changed, this, &Greeting::greetSoon);
  connect(&context.news, &FolderNews::serverChanged, this, &Greeting::greetSoon);
  window.installEventFilter(this);
}

bool Greeting::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::Show) greetSoon();
  return QObject::eventFilter(object, event);
}

void Greeting::greetSoon() {
  if (hasGreeted_) return;
  context_.platform.runLoop.post([self = QPointer<Greeting>(this)] {
    if (self) self->greet();
  });
}

void Greeting::greet() {
  // Before the start is through the folders of the last run are not back.
  if (hasGreeted_ || context_.sheets == nullptr || !window_.isVisible() ||
      !context_.application.isStarted()) {
    return;
  }
  hasGreeted_ = true;
  const auto folders = context_.operations.list();
  const bool hasFolder = std::any_of(folders.begin(), folders.end(), [](const PoolInfo& info) {
    return info.state.kind != FolderStateKind::NotSubscribed || !info.folder.empty();
  });
  if (!hasFolder) {
    context_.sheets->quickStart();
  } else if (isNewVersion_) {
    context_.sheets->releaseNotes();
  }
}

}  // namespace zolvar
