// The interface tables generated from protocols/*.xml, compiled as C++ so that the project
// needs no C compiler. The headers come first: their declarations give the tables the C
// linkage the rest of the library expects.
#include "wlr-gamma-control-unstable-v1-client.h"
#include "wlr-output-management-unstable-v1-client.h"
#include "xdg-output-unstable-v1-client.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wconversion"
// The tables were declared by the headers already; the hidden visibility comes too late.
#pragma GCC diagnostic ignored "-Wattributes"
extern "C" {
#include "wlr-gamma-control-unstable-v1.c"
#include "wlr-output-management-unstable-v1.c"
#include "xdg-output-unstable-v1.c"
}
#pragma GCC diagnostic pop
