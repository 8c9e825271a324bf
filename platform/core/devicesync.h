#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "platform/core/childprocess.h"
#include "platform/core/descriptor.h"
#include "platform/core/folderitem.h"

namespace orvelin {

/// Has the kernel write the files of a folder to the device.
///
/// write(), close() and rename() change only the kernel's memory. A stick that is pulled out then,
/// or that can't store what it accepted, loses files without an error. When `finish` returns,
/// everything that was written to the folder's file system, directory entries included, is on the
/// device. Otherwise it throws.
///
/// Not promised:
/// - Before `finish` returns, after a power cut: files can be missing, empty or partial, even those
///   that were renamed. (If just the program is killed, the kernel writes all that it accepted.)
/// - Another file system that is mounted inside the folder, or that a symlink inside leads to.
/// - Network shares, and FUSE without a block device (sshfs, gvfs): of those, only the `file` of
///   `finish` is flushed.
/// - Devices that report data in their own cache as written.
///
/// syncfs() also waits for what other programs have written to this file system. It blocks as long
/// as the device needs, so a child process calls it.
class DeviceSync {
 public:
  /// Opens the folder; if that fails, `start` and `finish` throw. Construct it before the first
  /// write: an error that was reported to another program is not reported to descriptors that are
  /// opened later.
  explicit DeviceSync(const FolderItem& folder);

  /// Starts to write in the background, unless that is still under way or was started in the last
  /// 200 ms. Throws NilObjectException if the device has reported an error, or if nothing has been
  /// written to it for five minutes (where the kernel counts that: not on btrfs, overlayfs, shares
  /// and FUSE). If fork() fails, the next call tries again.
  void start();
  /// Waits until everything is written, and runs the background task. Also calls fsync() for
  /// `file`, because some file systems ignore syncfs(). Throws like `start`, and if fork() fails.
  void finish(const FolderItem& file);

 private:
  bool isRunning();
  void fork(const std::string& file = "");
  void wait();
  std::uint64_t sectorsWritten() const;
  [[noreturn]] void fail(int error) const;

  std::string path_;
  Descriptor folder_;
  int error_;
  std::string counters_;  // the device's file of counters; empty if there is none
  ChildProcess child_;
  bool running_ = false;
  std::chrono::steady_clock::time_point lastStart_, lastProgress_;
  std::uint64_t lastSectors_ = 0;
};

}  // namespace orvelin
