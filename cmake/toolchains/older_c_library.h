// Read before every source when the sysroot's C library is older than the one that the compiler's
// C++ library was built for: that expects functions that the sysroot's headers do not declare.
#include <bits/c++config.h>

#if !__GLIBC_PREREQ(2, 10)
#undef _GLIBCXX_HAVE_AT_QUICK_EXIT
#undef _GLIBCXX_HAVE_QUICK_EXIT
#endif

#if !__GLIBC_PREREQ(2, 16)
#undef _GLIBCXX_HAVE_ALIGNED_ALLOC
#undef _GLIBCXX_HAVE_TIMESPEC_GET
#endif

#if !__GLIBC_PREREQ(2, 30)
#undef _GLIBCXX_USE_PTHREAD_COND_CLOCKWAIT
#undef _GLIBCXX_USE_PTHREAD_MUTEX_CLOCKLOCK
#undef _GLIBCXX_USE_PTHREAD_RWLOCK_CLOCKLOCK
#endif
