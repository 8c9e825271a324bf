#pragma once

namespace orvelin {

/// Which of the kernel's means hold. A kernel or a container may lack either; the limits on
/// resources always hold.
struct Confinement {
  bool files = false;  ///< Landlock: no path can be opened, created or changed
  bool calls = false;  ///< seccomp: no system calls but those that decoding needs
};

/// Leaves this process nothing but to compute and to use its open descriptors, irrevocably. To be
/// called once every library has been loaded and started, and before any thread is.
Confinement confine();

}  // namespace orvelin
