#pragma once
// The root class and its protocol, with the few messages the backend sends.

#include <objc/objc.h>

@protocol NSObject
- (BOOL)isKindOfClass:(Class)aClass;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject> {
    Class isa;
}
+ (instancetype)alloc;
+ (instancetype)new;
+ (Class)class;
+ (BOOL)instancesRespondToSelector:(SEL)aSelector;
- (instancetype)init;
@end
