#pragma once

namespace zolvar {

class Application;
class Operations;
class Outcomes;
class SheetsController;
class FolderNews;
struct Platform;

/// What the parts of the window work with, as references to what outlives them all. Main thread.
struct WindowContext {
  Application& application;
  Operations& operations;
  Outcomes& outcomes;
  SheetsController& sheetsController;
  Platform& platform;
  FolderNews& news;
};

}  // namespace zolvar
