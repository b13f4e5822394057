#pragma once

#include "app/QMCharFilterFormatter.h"

namespace zolvar {

/// Names of synced folders as they are typed: code points 32 to 127 only, and never more than 120
/// bytes; a longer proposal is refused as a whole. What may be shared in the end is stricter, see
/// FolderRules. Immutable.
class KDFilePoolNameFormatter : public QMCharFilterFormatter {
 public:
  [[nodiscard]] Verdict check(const TypedText& proposed) const override;

 protected:
  [[nodiscard]] bool isInvalid(char32_t character) const override;
};

}  // namespace zolvar
