#pragma once

#include "app/ConflictDecisions.h"
#include "ui/PersonColors.h"

namespace zolvar {

class Application;
class Operations;
class Outcomes;
class SheetsController;
class FolderNews;
class Sheets;
struct Platform;

/// What the parts of the window work with, as references to what outlives them all. Main thread.
struct WindowContext {
  Application& application;
  Operations& operations;
  Outcomes& outcomes;
  SheetsController& sheetsController;
  Platform& platform;
  FolderNews& news;
  Sheets* sheets = nullptr;  ///< null before they are made and after they are gone
  PersonColors colors = {};
  ConflictDecisions decisions{operations};  ///< what is under way ends without a window too
  Undo lastUndo = {};                       ///< without files: there is nothing to undo
};

}  // namespace zolvar
