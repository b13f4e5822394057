#pragma once

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
};

}  // namespace zolvar
