#pragma once

#import <Foundation/NSEnumerator.h>

@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject <NSFastEnumeration>
- (ObjectType)objectForKeyedSubscript:(KeyType)key;
@end
