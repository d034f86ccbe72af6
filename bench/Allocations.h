#ifndef BENCH_ALLOCATIONS_H
#define BENCH_ALLOCATIONS_H

/// Calls of malloc and the like, and of operator new, since the start of the program.
long allocations();

#endif
