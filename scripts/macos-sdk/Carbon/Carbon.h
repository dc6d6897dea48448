#pragma once
// The Carbon event manager's hot keys and event handlers.

#include <CoreServices/CoreServices.h>

CF_EXTERN_C_BEGIN

typedef struct OpaqueEventRef* EventRef;
typedef struct OpaqueEventHandlerRef* EventHandlerRef;
typedef struct OpaqueEventHandlerCallRef* EventHandlerCallRef;
typedef struct OpaqueEventTargetRef* EventTargetRef;
typedef struct OpaqueEventHotKeyRef* EventHotKeyRef;

typedef OSType EventParamName;
typedef OSType EventParamType;

typedef OSStatus (*EventHandlerProcPtr)(EventHandlerCallRef inHandlerCallRef, EventRef inEvent,
                                        void* inUserData);
typedef EventHandlerProcPtr EventHandlerUPP;

struct EventTypeSpec {
    OSType eventClass;
    UInt32 eventKind;
};
typedef struct EventTypeSpec EventTypeSpec;

struct EventHotKeyID {
    OSType signature;
    UInt32 id;
};
typedef struct EventHotKeyID EventHotKeyID;

enum {
    kEventClassKeyboard = 0x6B657962,  // 'keyb'
};
enum {
    kEventHotKeyPressed = 5,
    kEventHotKeyReleased = 6,
};
enum {
    kEventParamDirectObject = 0x2D2D2D2D,  // '----'
    typeEventHotKeyID = 0x686B6964,        // 'hkid'
};
enum {
    eventInternalErr = -9868,
    eventNotHandledErr = -9874,
    eventHotKeyExistsErr = -9878,
    eventHotKeyInvalidErr = -9879,
};

EventTargetRef GetApplicationEventTarget(void);
EventHandlerUPP NewEventHandlerUPP(EventHandlerProcPtr userRoutine);
OSStatus InstallEventHandler(EventTargetRef inTarget, EventHandlerUPP inHandler,
                             ItemCount inNumTypes, const EventTypeSpec* inList, void* inUserData,
                             EventHandlerRef* outRef);
OSStatus RemoveEventHandler(EventHandlerRef inHandlerRef);
OSStatus GetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inDesiredType,
                           EventParamType* outActualType, ByteCount inBufferSize,
                           ByteCount* outActualSize, void* outData);
OSStatus RegisterEventHotKey(UInt32 inHotKeyCode, UInt32 inHotKeyModifiers,
                             EventHotKeyID inHotKeyID, EventTargetRef inTarget,
                             OptionBits inOptions, EventHotKeyRef* outRef);
OSStatus UnregisterEventHotKey(EventHotKeyRef inHotKey);

CF_EXTERN_C_END
