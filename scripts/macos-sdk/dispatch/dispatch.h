#pragma once
// Dispatch queues: only the main queue is named.

#include <os/object.h>

#ifdef __OBJC__
@protocol OS_dispatch_object <NSObject>
@end
@protocol OS_dispatch_queue <OS_dispatch_object>
@end
@protocol OS_dispatch_queue_serial <OS_dispatch_queue>
@end
@protocol OS_dispatch_queue_main <OS_dispatch_queue_serial>
@end
typedef NSObject<OS_dispatch_queue>* dispatch_queue_t;
typedef NSObject<OS_dispatch_queue_main>* dispatch_queue_main_t;
#else
typedef struct dispatch_queue_s* dispatch_queue_t;
typedef struct dispatch_queue_s* dispatch_queue_main_t;
#endif

#ifdef __cplusplus
extern "C" {
#endif
dispatch_queue_main_t dispatch_get_main_queue(void);
#ifdef __cplusplus
}
#endif
