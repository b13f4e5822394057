#include "ui/WindowMemory.h"

#include <QHeaderView>
#include <QSplitter>

#include "platform/UserDefaults.h"

namespace zolvar {
namespace {

std::string keyOf(const std::string& name) { return "MasterDetail-" + name; }

}  // namespace

QByteArray WindowMemory::recall(const std::string& name) const {
  return QByteArray::fromBase64(QByteArray::fromStdString(recallText(name)));
}

void WindowMemory::keep(const std::string& name, const QByteArray& state) {
  keepText(name, state.toBase64().toStdString());
}

std::string WindowMemory::recallText(const std::string& name) const {
  return defaults_.string(keyOf(name)).value_or("");
}

void WindowMemory::keepText(const std::string& name, const std::string& text) {
  if (recallText(name) != text) defaults_.setString(keyOf(name), text);
}

void WindowMemory::restore(const std::string& name, QSplitter& splitter) const {
  const QByteArray state = recall(name);
  if (!state.isEmpty()) splitter.restoreState(state);
}

void WindowMemory::save(const std::string& name, const QSplitter& splitter) {
  keep(name, splitter.saveState());
}

bool WindowMemory::restore(const std::string& name, QHeaderView& header) const {
  const QByteArray state = recall(name);
  return !state.isEmpty() && header.restoreState(state);
}

void WindowMemory::save(const std::string& name, const QHeaderView& header) {
  keep(name, header.saveState());
}

}  // namespace zolvar
