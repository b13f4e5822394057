#include "app/KDFilePoolNameFormatter.h"

#include "util/PathRules.h"

namespace zolvar {

QMCharFilterFormatter::Verdict KDFilePoolNameFormatter::check(const TypedText& proposed) const {
  if (proposed.text.size() > LongestPoolName) return {false, std::nullopt};
  return QMCharFilterFormatter::check(proposed);
}

bool KDFilePoolNameFormatter::isInvalid(char32_t character) const {
  return character < 32 || character > 127;
}

}  // namespace zolvar
