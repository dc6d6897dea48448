#pragma once

#import <Foundation/NSEnumerator.h>

@interface NSArray<__covariant ObjectType> : NSObject <NSFastEnumeration>
+ (instancetype)array;
@property(readonly) NSUInteger count;
@property(nonatomic, readonly) ObjectType firstObject;
@end

@interface NSMutableArray<ObjectType> : NSArray <ObjectType>
- (void)addObject:(ObjectType)anObject;
@end
