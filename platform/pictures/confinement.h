#pragma once

namespace orvelin {

/// Whether this build has AddressSanitizer, which reserves more memory than the limit and ptraces
/// the process to find leaks. Such a build has no limit on memory and no seccomp.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool sanitized = true;
#elif defined(__has_feature)
inline constexpr bool sanitized = __has_feature(address_sanitizer);
#else
inline constexpr bool sanitized = false;
#endif

/// The mechanisms in effect. A kernel or a container may lack them; resource limits always apply.
struct Confinement {
  bool files = false;  ///< Landlock: no path can be opened, created or changed
  bool calls = false;  ///< seccomp: only the system calls that decoding needs
};

/// Irrevocably gives up all rights of this process except to compute and to use its open
/// descriptors. Call it after all libraries are loaded and initialized, before any thread starts.
Confinement confine();

}  // namespace orvelin
