#include "util/Failure.h"

#include <cerrno>
#include <system_error>

namespace zolvar {

Failure failureFromErrno(int error, std::string attempt, std::string subject) {
  FailureKind kind = FailureKind::Transient;
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      kind = FailureKind::Absent;
      break;
    case EACCES:
    case EPERM:
    case EROFS:
    case ELOOP:
    case EXDEV:
    case ENAMETOOLONG:
    case EINVAL:
      kind = FailureKind::Refused;
      break;
    default:
      break;
  }
  return {kind, std::move(attempt), std::move(subject), std::generic_category().message(error)};
}

}  // namespace zolvar
