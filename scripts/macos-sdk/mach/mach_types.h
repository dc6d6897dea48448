#pragma once
// The mach types IOKit's interfaces are written in.

typedef unsigned int mach_port_t;
typedef int kern_return_t;

#define KERN_SUCCESS 0
