#ifndef BENCH_ENTRANTS_H
#define BENCH_ENTRANTS_H

#include <string>

// Each of those that take part adds its entries; a source file each.
void addLibrary(const std::string& who, const std::string& path);
void addReference();
void addFloor();
void addProtobuf();
void addPugixml();
void addNlohmann();

#endif
