#pragma once

// The macros of Clang's thread-safety analysis.

// Clang's thread-safety attributes. They say which lock guards a member and which lock a function needs. The clang
// build checks both. Other compilers ignore them.
#if defined(__clang__)
#define VANTREL_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define VANTREL_THREAD_ATTRIBUTE(x)
#endif

#define CAPABILITY(x) VANTREL_THREAD_ATTRIBUTE(capability(x))
#define SCOPED_CAPABILITY VANTREL_THREAD_ATTRIBUTE(scoped_lockable)
#define GUARDED_BY(x) VANTREL_THREAD_ATTRIBUTE(guarded_by(x))
#define PT_GUARDED_BY(x) VANTREL_THREAD_ATTRIBUTE(pt_guarded_by(x))
#define REQUIRES(...) VANTREL_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define REQUIRES_SHARED(...) VANTREL_THREAD_ATTRIBUTE(requires_shared_capability(__VA_ARGS__))
#define ACQUIRE(...) VANTREL_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define ACQUIRE_SHARED(...) VANTREL_THREAD_ATTRIBUTE(acquire_shared_capability(__VA_ARGS__))
#define RELEASE(...) VANTREL_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define RELEASE_SHARED(...) VANTREL_THREAD_ATTRIBUTE(release_shared_capability(__VA_ARGS__))
#define RELEASE_GENERIC(...) VANTREL_THREAD_ATTRIBUTE(release_generic_capability(__VA_ARGS__))
#define TRY_ACQUIRE(...) VANTREL_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define EXCLUDES(...) VANTREL_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define NO_THREAD_SAFETY_ANALYSIS VANTREL_THREAD_ATTRIBUTE(no_thread_safety_analysis)
