// SPDX-License-Identifier: Apache-2.0
//
// The errors that the manual pages (man-pages 6, section 2 and 3) give each call, but for those that
// only a broken program meets (EFAULT).
#pragma once

#include <cerrno>
#include <map>
#include <string>
#include <vector>

namespace sweep {

inline const std::map<std::string, std::vector<int>>& documentedErrors() {
  static const std::map<std::string, std::vector<int>> errors = {
      {"openat",
       {EACCES, EBADF,  EBUSY,   EDQUOT, EEXIST,       EFBIG,      EINTR,    EINVAL,  EISDIR,
        ELOOP,  EMFILE, ENFILE,  ENODEV, ENOENT,       ENOMEM,     ENOSPC,   ENOTDIR, ENXIO,
        EPERM,  EROFS,  ETXTBSY, EAGAIN, ENAMETOOLONG, EOPNOTSUPP, EOVERFLOW}},
      {"close", {EBADF, EINTR, EIO, ENOSPC, EDQUOT}},
      {"fstatat", {EACCES, EBADF, EINVAL, ELOOP, ENAMETOOLONG, ENOENT, ENOMEM, ENOTDIR, EOVERFLOW}},
      {"fstatfs", {EBADF, EINTR, EIO, ENOMEM, ENOSYS, EOVERFLOW}},
      {"faccessat",
       {EACCES, EBADF, EINVAL, EIO, ELOOP, ENAMETOOLONG, ENOENT, ENOMEM, ENOTDIR, EPERM, EROFS,
        ETXTBSY}},
      {"isatty", {EBADF, ENOTTY}},
      {"readlinkat", {EACCES, EBADF, EINVAL, EIO, ELOOP, ENAMETOOLONG, ENOENT, ENOMEM, ENOTDIR}},
      {"read", {EAGAIN, EBADF, EINTR, EINVAL, EIO, EISDIR}},
      {"write",
       {EAGAIN, EBADF, EDESTADDRREQ, EDQUOT, EFBIG, EINTR, EINVAL, EIO, ENOSPC, EPERM, EPIPE}},
      {"poll", {EINTR, EINVAL, ENOMEM}},
      {"fchmod", {EACCES, EBADF, EIO, ELOOP, ENAMETOOLONG, ENOENT, ENOMEM, ENOTDIR, EPERM, EROFS}},
      {"fsync", {EBADF, EINTR, EIO, ENOSPC, EROFS, EINVAL, EDQUOT}},
      {"renameat2",
       {EACCES, EBADF, EBUSY, EDQUOT, EEXIST, EINVAL, EISDIR, ELOOP, EMLINK, ENOENT, ENOMEM, ENOSPC,
        ENOTDIR, ENOTEMPTY, ENOSYS, EPERM, EROFS, EXDEV, ENAMETOOLONG}},
      {"linkat",
       {EACCES, EBADF, EDQUOT, EEXIST, EINVAL, EIO, ELOOP, EMLINK, ENOENT, ENOMEM, ENOSPC, ENOTDIR,
        EPERM, EROFS, EXDEV, ENAMETOOLONG}},
      {"unlinkat",
       {EACCES, EBADF, EBUSY, EINVAL, EIO, EISDIR, ELOOP, ENOENT, ENOMEM, ENOTDIR, EPERM, EROFS,
        ENAMETOOLONG}},
      {"ioctl", {EBADF, EINVAL, ENOTTY, EINTR, EAGAIN, EMSGSIZE, ENOMEM, ENODEV, EPERM, EIO}},
  };
  return errors;
}

}  // namespace sweep
