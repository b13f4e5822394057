#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <chrono>
#include <functional>
#include <string>

#include "platform/qt/QtRunLoop.h"
#include "support/RecordingLog.h"

namespace zolvar {

/// A fresh folder of the real file system, removed with all in it at the end.
class TemporaryFolder {
 public:
  /// `above` is the system's temporary folder unless another file system is wanted.
  explicit TemporaryFolder(const std::string& above = {});
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] std::string path(const std::string& below) const { return path_ + "/" + below; }
  /// Writes a file, making the folders above it.
  void write(const std::string& below, const std::string& content) const;
  void makeFolder(const std::string& below) const;
  [[nodiscard]] std::string content(const std::string& below) const;
  [[nodiscard]] bool exists(const std::string& below) const;

 private:
  std::string path_;
};

/// A folder in memory for tests that make many files, or "" where there is none.
std::string memoryFolder();

/// The user data folder that all tests of this binary run with ($XDG_DATA_HOME).
std::string testDataHome();

/// Tests with an event loop.
class LoopTest : public testing::Test {
 protected:
  /// Runs the loop until the condition holds; false when it does not within so many seconds.
  static bool runUntil(const std::function<bool()>& condition, double seconds = 10);
  /// Runs the loop for what is due now.
  void turn();

  RecordingLog log_;
  QtRunLoop loop_{log_};
};

}  // namespace zolvar
