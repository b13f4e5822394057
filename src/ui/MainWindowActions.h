#pragma once

#include <QList>

class QAction;
class QMenu;
class QMenuBar;
class QWidget;

namespace zolvar {

/// The actions of the main window and the menus made of them; the window connects them to what they
/// do. Owned by the window. Main thread.
class MainWindowActions {
 public:
  explicit MainWindowActions(QWidget& window);

  void fill(QMenuBar& bar, QAction& undo, const QList<QAction*>& ofConflicts,
            const QList<QAction*>& ofMissing, const QList<QAction*>& ofUsers, QAction& details);

  // Files.
  QAction* share;
  QAction* shareContacts;  ///< of a program with an address book
  QAction* preferences;
  QAction* close;
  QAction* quit;
  // One folder.
  QAction* subscribe;
  QAction* unsubscribe;
  QAction* open;
  QAction* sync;
  QAction* settings;
  QAction* remove;
  QAction* pauseHour;
  QAction* pause;
  QAction* resume;
  QMenu* folderMenu = nullptr;  ///< also the list's context menu
  // What is seen.
  QAction* find;
  QAction* users;
  QAction* missing;
  QAction* conflicts;
  QAction* showUnsubscribed;
  // Help.
  QAction* quickStart;
  QAction* releaseNotes;
  QAction* about;

 private:
  QWidget& window_;
};

}  // namespace zolvar
