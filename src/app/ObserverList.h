#pragma once

#include <algorithm>
#include <vector>

#include "app/ApplicationObserver.h"

namespace zolvar {

/// The application's observers. An observer may add or remove observers from inside a call. Owned
/// by the application. Main thread.
class ObserverList {
 public:
  void add(ApplicationObserver& observer) { observers_.push_back(&observer); }
  void remove(ApplicationObserver& observer) { std::erase(observers_, &observer); }

  /// Calls `tell(observer)` for each that is still there when its turn comes.
  template <class Tell>
  void tell(const Tell& tell) const {
    const auto current = observers_;
    for (ApplicationObserver* observer : current) {
      if (std::find(observers_.begin(), observers_.end(), observer) != observers_.end()) {
        tell(*observer);
      }
    }
  }

 private:
  std::vector<ApplicationObserver*> observers_;
};

}  // namespace zolvar
