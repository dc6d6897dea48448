#pragma once

#include <IOKit/IOReturn.h>
#include <MacTypes.h>

typedef UInt32 IOOptionBits;

typedef mach_port_t io_object_t;
typedef io_object_t io_iterator_t;
typedef io_object_t io_registry_entry_t;
typedef io_object_t io_service_t;
