#pragma once
// The I/O registry: matching services, walking them, reading their properties.

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOReturn.h>
#include <IOKit/IOTypes.h>

CF_EXTERN_C_BEGIN

extern const mach_port_t kIOMainPortDefault;

CFMutableDictionaryRef IOServiceMatching(const char* name);
CFMutableDictionaryRef IORegistryEntryIDMatching(uint64_t entryID);
// Both consume one reference to the matching dictionary.
kern_return_t IOServiceGetMatchingServices(mach_port_t mainPort, CFDictionaryRef matching,
                                           io_iterator_t* existing);
io_service_t IOServiceGetMatchingService(mach_port_t mainPort, CFDictionaryRef matching);

io_object_t IOIteratorNext(io_iterator_t iterator);
kern_return_t IOObjectRelease(io_object_t object);

CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key,
                                          CFAllocatorRef allocator, IOOptionBits options);
kern_return_t IORegistryEntryGetRegistryEntryID(io_registry_entry_t entry, uint64_t* entryID);

CF_EXTERN_C_END
