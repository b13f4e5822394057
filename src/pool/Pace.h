#pragma once

namespace zolvar {

/// How often things happen, in seconds. One value for the whole program.
struct Pace {
  double scanInterval = 10;
  double freshFiles = 10;  ///< a file whose |now - time| is below this waits for a later scan
  double debounce = 5;     ///< announcements and full syncs wait this long for further changes
  double queueTimer = 30;
  double thresholdLeast = 30;  ///< a participant synced less than least + spread × r ago waits
  double thresholdSpread = 10;
  double afterSync = 2;       ///< from a sync's end to the next look at the queue
  double scanAfterClose = 0;  ///< scan what changed this long after a writer closed it; 0: never

  static Pace normal() { return {}; }
  static Pace quick() { return {10, 1, 0.5, 5, 5, 2, 2, 1}; }
};

}  // namespace zolvar
