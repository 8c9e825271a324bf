#pragma once

namespace orvelin {

/// The mechanisms in effect. A kernel or a container may lack them; resource limits always apply.
struct Confinement {
  bool files = false;  ///< Landlock: no path can be opened, created or changed
  bool calls = false;  ///< seccomp: only the system calls that decoding needs
};

/// Irrevocably gives up all rights of this process except to compute and to use its open
/// descriptors. Call it after all libraries are loaded and initialized, before any thread starts.
Confinement confine();

}  // namespace orvelin
