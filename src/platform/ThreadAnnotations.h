#pragma once

// Compile-time thread checks (clang -Wthread-safety; empty on other compilers).
//
// All published state and all views live on the main thread. A field marked
// VALDORN_MAIN_THREAD_ONLY may be touched only by functions marked VALDORN_ON_MAIN_THREAD, so a
// touch from a reader thread does not compile. A closure that is handed to the MainQueue carries
// the mark itself: `queue.post([this]() VALDORN_ON_MAIN_THREAD { ... })`.
#if defined(__clang__)
#define VALDORN_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define VALDORN_THREAD_ATTRIBUTE(x)
#endif

namespace valdorn {

// A capability with no lock behind it: being the main thread.
class VALDORN_THREAD_ATTRIBUTE(capability("main thread")) MainThreadRole {};

// The one role object; named only in annotations, never used at run time.
inline constexpr MainThreadRole mainThread{};

}  // namespace valdorn

#define VALDORN_ON_MAIN_THREAD VALDORN_THREAD_ATTRIBUTE(requires_capability(::valdorn::mainThread))
#define VALDORN_MAIN_THREAD_ONLY VALDORN_THREAD_ATTRIBUTE(guarded_by(::valdorn::mainThread))
