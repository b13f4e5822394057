#include <CLI/CLI.hpp>
#include <QCoreApplication>

#include "cli/EngineProgram.h"

// The engine without a window, in the foreground: for servers, storage boxes and tests.

int main(int argc, char** argv) {
  using zolvar::EngineProgram;
  CLI::App arguments{
      "Keeps shared folders in step; runs in the foreground until it is told to end.", "zolvard"};
  EngineProgram::Options options;
  options.name = "zolvard";
  if (const auto status = EngineProgram::begin(arguments, argc, argv, options)) return *status;
  int noArguments = 1;
  const QCoreApplication application(noArguments, argv);
  EngineProgram program;
  if (const auto made = program.make(options); !made) return EngineProgram::refuse(made.error());
  program.application().start();
  return program.finish(QCoreApplication::exec());
}
