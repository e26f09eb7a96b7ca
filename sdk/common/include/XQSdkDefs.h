/*
 * Definitions shared by the two device SDKs (XQCameraControl and
 * XqCodeReaderCtrl): handle type, return codes, exception codes, transport
 * masks, access modes and the enumeration value record.
 *
 * Every SDK function returns 0 (XQ_OK) on success and one of the XQ_ERR_*
 * codes below otherwise, unless its comment says differently.
 */
#ifndef XQ_SDK_DEFS_H
#define XQ_SDK_DEFS_H

#include <stdbool.h>
#include <stdint.h>

#if defined(XQ_SDK_BUILDING)
#define XQ_API __attribute__((visibility("default")))
#else
#define XQ_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Opaque handle of an SDK session. It is an id in the issuing library's
 * registry, never a pointer: a destroyed, stale, doubly destroyed or foreign
 * handle (one library's handle passed to the other library) makes a call
 * fail with XQ_ERR_INVALID_HANDLE; it never crashes. NULL is never a valid
 * handle.
 */
typedef void* XQ_HANDLE;

/* ---- Return codes ------------------------------------------------------ */

#define XQ_OK                      0x00000000 /* success */
#define XQ_ERR_INVALID_HANDLE      0x00010001 /* unknown, destroyed or foreign handle */
#define XQ_ERR_INVALID_PARAMETER   0x00010002 /* NULL pointer, out-of-range value, bad feature name */
#define XQ_ERR_NOT_SUPPORTED       0x00010003 /* operation, transport or mode not supported */
#define XQ_ERR_BUFFER_TOO_SMALL    0x00010004 /* caller's buffer too small; nothing written past its end */
#define XQ_ERR_WRONG_STATE         0x00010005 /* call order: device not open, already open, not grabbing ... */
#define XQ_ERR_RESOURCE            0x00010006 /* out of memory, threads, sockets or files */
#define XQ_ERR_NO_DATA             0x00010007 /* nothing arrived within the time-out */
#define XQ_ERR_ACCESS_DENIED       0x00010008 /* device held by another client, or feature not readable/writable now */
#define XQ_ERR_GENICAM             0x00010009 /* feature missing, of another type, or its evaluation failed */
#define XQ_ERR_DEVICE_IO           0x0001000A /* the device did not answer or answered with an error */
#define XQ_ERR_DEVICE_LOST         0x0001000B /* the device was lost; close and destroy the handle */
#define XQ_ERR_NOT_FOUND           0x0001000C /* device in the record could not be found on the network */
#define XQ_ERR_DESCRIPTION_REFUSED 0x0001000D /* open refused the device's GenICam description: URL not Local:, size
                                                 or unpacked size over 16 MiB, malformed zip, not read within 10 s */
#define XQ_ERR_CANCELLED           0x0001000E /* the wait ended because the handle was closed or destroyed meanwhile */
#define XQ_ERR_INTERNAL            0x000100FF /* unexpected failure inside the SDK */

/* ---- Exception callback ------------------------------------------------ */

/* Message passed to the exception callback when the device is lost (control
 * or heartbeat lost, device gone). */
#define XQ_EXCEPTION_DEVICE_LOST 0x00008001

/*
 * Exception callback. Called on an SDK thread, never on the caller's thread,
 * with the message code and the user pointer given at registration. It may
 * call any SDK function, including the release functions on the very handle
 * that reported the exception.
 */
typedef void (*XQ_EXCEPTION_CALLBACK)(unsigned int nMsgType, void* pUser);

/* ---- Transport layers (masks for enumeration, nTLayerType in records) --- */

#define XQ_TLAYER_GIGE 0x00000001 /* GigE Vision */
#define XQ_TLAYER_USB  0x00000004 /* USB3 Vision */

/* ---- Access modes for opening and for accessibility checks ------------- */

#define XQ_ACCESS_EXCLUSIVE 1 /* sole controller; other clients may not write */
#define XQ_ACCESS_CONTROL   2 /* controller; other clients may read */
#define XQ_ACCESS_MONITOR   3 /* read-only; never takes control, no streaming */

/* ---- Feature nodes: interface types, access modes, visibility -------- */

/* Interface types of feature nodes. */
#define XQ_IFT_IVALUE       0
#define XQ_IFT_IBASE        1
#define XQ_IFT_IINTEGER     2
#define XQ_IFT_IBOOLEAN     3
#define XQ_IFT_ICOMMAND     4
#define XQ_IFT_IFLOAT       5
#define XQ_IFT_ISTRING      6
#define XQ_IFT_IREGISTER    7
#define XQ_IFT_ICATEGORY    8
#define XQ_IFT_IENUMERATION 9
#define XQ_IFT_IENUMENTRY   10
#define XQ_IFT_IPORT        11

/* Access modes of feature nodes. */
#define XQ_AM_NI        0 /* not implemented */
#define XQ_AM_NA        1 /* not available */
#define XQ_AM_WO        2 /* write-only */
#define XQ_AM_RO        3 /* read-only */
#define XQ_AM_RW        4 /* read-write */
#define XQ_AM_UNDEFINED 5
#define XQ_AM_CYCLE     6 /* cycle detected while evaluating */

/* Visibility of feature nodes; anything above 2 is hidden from users. */
#define XQ_VISIBILITY_BEGINNER  0
#define XQ_VISIBILITY_EXPERT    1
#define XQ_VISIBILITY_GURU      2
#define XQ_VISIBILITY_INVISIBLE 3
#define XQ_VISIBILITY_UNDEFINED 99

/* ---- Device lists ------------------------------------------------------ */

#define XQ_MAX_DEVICE_NUM 256

/* ---- Enumeration value record ------------------------------------------ */

#define XQ_MAX_ENUM_SUPPORTED_NUM 64

/* One enumeration feature: its current value and its available entries'
 * values, in the order the feature description lists them. */
typedef struct _XQ_ENUMVALUE_ {
    unsigned int nCurrentValue;                            /* current value */
    unsigned int nSupportedCount;                          /* entries in nSupportedValues */
    unsigned int nSupportedValues[XQ_MAX_ENUM_SUPPORTED_NUM]; /* available entry values */
    unsigned int nReserved[4];
} XQ_ENUMVALUE;

#ifdef __cplusplus
}
#endif

#endif /* XQ_SDK_DEFS_H */
