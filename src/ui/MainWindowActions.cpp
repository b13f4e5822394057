#include "ui/MainWindowActions.h"

#include <QAction>
#include <QMenuBar>

#include "ui/TabParts.h"
#include "ui/Texts.h"

namespace zolvar {
namespace {

QAction* withKey(QAction* action, const QKeySequence& key) {
  action->setShortcut(key);
  return action;
}

}  // namespace

MainWindowActions::MainWindowActions(QWidget& window) : window_(window) {
  const auto make = [&](const char* theme, const char* own, const QString& text,
                        const QString& tip = {}) {
    return makeAction(window, theme, own, text, tip);
  };
  share = withKey(make("folder-new", "share", Zolvar::tr("&Share Folder…"),
                       Zolvar::tr("Offer a folder to everybody on this network")),
                  QKeySequence::New);
  shareContacts = make("x-office-address-book", "contacts", Zolvar::tr("Share C&ontacts…"),
                       Zolvar::tr("Offer a group of the address book to everybody here"));
  preferences = withKey(make("preferences-system", "settings", Zolvar::tr("&Preferences…")),
                        QKeySequence("Ctrl+,"));
  preferences->setMenuRole(QAction::PreferencesRole);
  close = withKey(make("window-close", "close", Zolvar::tr("&Close Window")), QKeySequence::Close);
  quit = withKey(make("application-exit", "close", Zolvar::tr("&Quit Zolvar")),
                 QKeySequence("Ctrl+Q"));
  quit->setMenuRole(QAction::QuitRole);

  subscribe = make("folder-download", "subscribe", Zolvar::tr("&Subscribe…"),
                   Zolvar::tr("Have this folder on this computer too, and keep it in step"));
  unsubscribe = make("network-offline", "unsubscribe", Zolvar::tr("&Unsubscribe"),
                     Zolvar::tr("Take no more part; the folder and its files stay here"));
  open = withKey(make("folder-open", "open", Zolvar::tr("&Open"),
                      Zolvar::tr("Open the folder in the file browser")),
                 QKeySequence::Open);
  sync = withKey(make("view-refresh", "sync", Zolvar::tr("S&ync Now"),
                      Zolvar::tr("Ask everybody for changes now")),
                 QKeySequence::Refresh);
  settings = withKey(make("document-properties", "settings", Zolvar::tr("S&ettings…"),
                          Zolvar::tr("Password and notices of this folder")),
                     QKeySequence("Alt+Return"));
  remove = make("list-remove", "remove", Zolvar::tr("&Remove…"),
                Zolvar::tr("Take no more part, and put the folder into the Trash"));
  pauseHour = make("media-playback-pause", "pause", Zolvar::tr("Pause for an &Hour"));
  pause = make("media-playback-pause", "pause", Zolvar::tr("&Pause Until Resumed"));
  resume = make("media-playback-start", "resume", Zolvar::tr("Res&ume"));

  find = withKey(make("edit-find", "search", Zolvar::tr("&Find Folder")), QKeySequence::Find);
  users = withKey(make("system-users", "user", Zolvar::tr("&Users")), QKeySequence("Ctrl+1"));
  missing =
      withKey(make("folder-download", "subscribe", Zolvar::tr("&Missing")), QKeySequence("Ctrl+2"));
  conflicts =
      withKey(make("dialog-warning", "compare", Zolvar::tr("&Conflicts")), QKeySequence("Ctrl+3"));
  showUnsubscribed =
      withKey(make("view-visible", "visible", Zolvar::tr("Show &Unsubscribed Folders"),
                   Zolvar::tr("List the folders that others share as well")),
              QKeySequence("Ctrl+U"));
  showUnsubscribed->setCheckable(true);

  quickStart =
      withKey(make("help-contents", "use", Zolvar::tr("&First Steps")), QKeySequence::HelpContents);
  releaseNotes = make("help-about", "file", Zolvar::tr("&Release Notes"));
  about = make("help-about", "file", Zolvar::tr("&About Zolvar"));
  about->setMenuRole(QAction::AboutRole);
}

void MainWindowActions::fill(QMenuBar& bar, QAction& undo, const QList<QAction*>& ofConflicts,
                             const QList<QAction*>& ofMissing, const QList<QAction*>& ofUsers,
                             QAction& details) {
  QMenu* file = bar.addMenu(Zolvar::tr("&File"));
  file->addActions({share, shareContacts});
  file->addSeparator();
  file->addActions({preferences});
  file->addSeparator();
  file->addActions({close, quit});

  QMenu* edit = bar.addMenu(Zolvar::tr("&Edit"));
  edit->addActions({&undo});
  edit->addSeparator();
  edit->addActions({find});

  folderMenu = bar.addMenu(Zolvar::tr("F&older"));
  folderMenu->addActions({subscribe, unsubscribe, open, sync});
  folderMenu->addSeparator();
  folderMenu->addActions({pauseHour, pause, resume});
  folderMenu->addSeparator();
  folderMenu->addActions(ofUsers);
  folderMenu->addSeparator();
  folderMenu->addActions({settings, remove});

  QMenu* files = bar.addMenu(Zolvar::tr("&Versions"));
  files->addActions(ofConflicts);
  files->addSeparator();
  files->addActions(ofMissing);

  QMenu* view = bar.addMenu(Zolvar::tr("&View"));
  view->addActions({users, missing, conflicts});
  view->addSeparator();
  view->addActions({&details, showUnsubscribed});

  QMenu* help = bar.addMenu(Zolvar::tr("&Help"));
  help->addActions({quickStart, releaseNotes});
  help->addSeparator();
  help->addActions({about});
}

}  // namespace zolvar
