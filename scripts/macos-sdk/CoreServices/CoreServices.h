#pragma once
// Apple events: the codes of the get-URL event and of its direct parameter.

#include <CoreFoundation/CoreFoundation.h>

typedef FourCharCode AEEventClass;
typedef FourCharCode AEEventID;
typedef FourCharCode AEKeyword;
typedef FourCharCode DescType;

enum {
    keyDirectObject = 0x2D2D2D2D,      // '----'
    kInternetEventClass = 0x4755524C,  // 'GURL'
    kAEGetURL = 0x4755524C,            // 'GURL'
};
