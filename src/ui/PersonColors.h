#pragma once

#include <QColor>
#include <map>
#include <string>

namespace zolvar {

/// A calm colour for each person, the same in all of the window: the one that the user id asks for,
/// or the next free one where two ask for the same. When all are taken, people share. Owned by the
/// window's context. Main thread.
class PersonColors {
 public:
  QColor of(const std::string& userId);

 private:
  std::map<std::string, std::size_t> given_;  ///< user id → number of the colour
};

}  // namespace zolvar
