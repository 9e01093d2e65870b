#pragma once

// Clang thread-safety annotations; empty under other compilers.
#if defined(__clang__)
#define QUESTER_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define QUESTER_THREAD_ANNOTATION(x)
#endif

#define CAPABILITY(x) QUESTER_THREAD_ANNOTATION(capability(x))
#define GUARDED_BY(x) QUESTER_THREAD_ANNOTATION(guarded_by(x))
#define REQUIRES(...) QUESTER_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define ACQUIRE(...) QUESTER_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define RELEASE(...) QUESTER_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define TRY_ACQUIRE(...) QUESTER_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define EXCLUDES(...) QUESTER_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define SCOPED_CAPABILITY QUESTER_THREAD_ANNOTATION(scoped_lockable)
#define NO_THREAD_SAFETY_ANALYSIS QUESTER_THREAD_ANNOTATION(no_thread_safety_analysis)
