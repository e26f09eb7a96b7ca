/*
 * XqCodeReaderCtrl: code readers over GigE Vision. Enumeration, live
 * accessibility, sessions, enumeration and command features, software- or
 * free-running grabbing, and frames handed out as JPEG bytes together with
 * the codes found in them.
 *
 * Any GigE Vision camera can serve as a code reader: codes are decoded on
 * the host from the frames the device streams.
 *
 * Conventions:
 * - Every function returns XQ_OK (0) or an XQ_ERR_* code (XQSdkDefs.h),
 *   except XQ_CODEREADER_IsDeviceAccessible, which returns a bool.
 * - Feature names are NUL-terminated 8-bit texts, matched exactly.
 * - Text fields of records are always NUL-terminated within their size.
 * - Thread safety: any function may be called from any thread. Calls on one
 *   handle are serialised; different handles work in parallel.
 * - Handles of XQCameraControl are foreign here: XQ_ERR_INVALID_HANDLE.
 */
#ifndef XQ_CODE_READER_CTRL_H
#define XQ_CODE_READER_CTRL_H

#include "XQSdkDefs.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Device records ---------------------------------------------------- */

#define XQ_CODEREADER_TEXT_SIZE 64

/* Network block of a device record. Addresses are IPv4 with the first octet
 * in the most significant byte (10.64.52.2 is 0x0A403402). */
typedef struct _XQ_CODEREADER_GIGE_INFO_ {
    unsigned int  nIpCfgOption;       /* supported IP configuration bits */
    unsigned int  nIpCfgCurrent;      /* current IP configuration bits */
    unsigned int  nCurrentIp;         /* device address */
    unsigned int  nCurrentSubNetMask;
    unsigned int  nDefultGateWay;
    unsigned int  nNetExport;         /* host interface address that found it */
    unsigned char chManufacturerName[XQ_CODEREADER_TEXT_SIZE];
    /* The device's bootstrap model bytes exactly (at most 32, never
     * re-encoded), then NUL: the same bytes as the camera record's. A model
     * that fills the device's 32-byte field without a terminator is 32 bytes
     * long here; in the camera record it is 32 bytes with no NUL. */
    unsigned char chModelName[XQ_CODEREADER_TEXT_SIZE];
    unsigned char chDeviceVersion[XQ_CODEREADER_TEXT_SIZE];
    unsigned char chManufacturerSpecificInfo[XQ_CODEREADER_TEXT_SIZE];
    unsigned char chSerialNumber[XQ_CODEREADER_TEXT_SIZE];
    unsigned char chUserDefinedName[XQ_CODEREADER_TEXT_SIZE];
    unsigned int  nReserved[4];
} XQ_CODEREADER_GIGE_INFO;

/* One enumerated code reader. */
typedef struct _XQ_CODEREADER_DEVICE_INFO_ {
    unsigned int  bIsConnect;    /* 1 if a session of this process had it open when enumerated */
    unsigned short nMajorVer;    /* GigE Vision version of the device */
    unsigned short nMinorVer;
    unsigned int  nMacAddrHigh;  /* MAC bytes 0-1 in the low 16 bits */
    unsigned int  nMacAddrLow;   /* MAC bytes 2-5 */
    unsigned int  nTLayerType;   /* XQ_TLAYER_GIGE */
    unsigned int  nReserved[4];
    XQ_CODEREADER_GIGE_INFO stGigE;
    char          chDeviceId[128]; /* SDK's own key of the device; do not change */
} XQ_CODEREADER_DEVICE_INFO;

/* Device list: a count and up to XQ_MAX_DEVICE_NUM record pointers. */
typedef struct _XQ_CODEREADER_DEVICE_INFO_LIST_ {
    unsigned int               nDeviceNum;
    XQ_CODEREADER_DEVICE_INFO* pDeviceInfo[XQ_MAX_DEVICE_NUM];
} XQ_CODEREADER_DEVICE_INFO_LIST;

/* ---- Symbologies ------------------------------------------------------- */

#define XQ_SYMBOLOGY_UNKNOWN          0
#define XQ_SYMBOLOGY_DM               1
#define XQ_SYMBOLOGY_QR               2
#define XQ_SYMBOLOGY_EAN8             8
#define XQ_SYMBOLOGY_UPCE             9
#define XQ_SYMBOLOGY_UPCA             12
#define XQ_SYMBOLOGY_EAN13            13
#define XQ_SYMBOLOGY_CODEBAR          20
#define XQ_SYMBOLOGY_ITF25            25
#define XQ_SYMBOLOGY_CODE39           39
#define XQ_SYMBOLOGY_CODE93           93
#define XQ_SYMBOLOGY_CODE128          128
#define XQ_SYMBOLOGY_PDF417           131
#define XQ_SYMBOLOGY_MICROQR          140
#define XQ_SYMBOLOGY_MAXICODE         150
/* Symbologies the decoder knows beyond the tool's table. */
#define XQ_SYMBOLOGY_AZTEC            160
#define XQ_SYMBOLOGY_DATABAR          170
#define XQ_SYMBOLOGY_DATABAR_EXPANDED 171

/* Masks for XQ_CODEREADER_DECODE_PARAM.nFormats. */
#define XQ_FORMAT_DM               0x00000001u
#define XQ_FORMAT_QR               0x00000002u
#define XQ_FORMAT_MICROQR          0x00000004u
#define XQ_FORMAT_PDF417           0x00000008u
#define XQ_FORMAT_MAXICODE         0x00000010u
#define XQ_FORMAT_AZTEC            0x00000020u
#define XQ_FORMAT_EAN8             0x00000100u
#define XQ_FORMAT_EAN13            0x00000200u
#define XQ_FORMAT_UPCA             0x00000400u
#define XQ_FORMAT_UPCE             0x00000800u
#define XQ_FORMAT_CODE128          0x00001000u
#define XQ_FORMAT_CODE39           0x00002000u
#define XQ_FORMAT_CODE93           0x00004000u
#define XQ_FORMAT_CODEBAR          0x00008000u
#define XQ_FORMAT_ITF25            0x00010000u
#define XQ_FORMAT_DATABAR          0x00020000u
#define XQ_FORMAT_DATABAR_EXPANDED 0x00040000u
/* Default: the symbologies of the tool's table. */
#define XQ_FORMAT_DEFAULT          0x0001FF1Fu

/* ---- Frames ------------------------------------------------------------ */

#define XQ_CODEREADER_MAX_CODE_NUM   64
#define XQ_CODEREADER_CODE_TEXT_SIZE 256

typedef struct _XQ_CODEREADER_POINT_ {
    int nX;
    int nY;
} XQ_CODEREADER_POINT;

/* One decoded code. */
typedef struct _XQ_CODEREADER_CODE_INFO_ {
    char         chCode[XQ_CODEREADER_CODE_TEXT_SIZE]; /* UTF-8, NUL-terminated, cut to 255 bytes */
    unsigned int nCodeLen;      /* bytes in chCode before the NUL */
    int          nSymbology;    /* XQ_SYMBOLOGY_* */
    /* Corners in pixels of the frame: top-left, top-right, bottom-right,
     * bottom-left, as seen in the code's own orientation. */
    XQ_CODEREADER_POINT stCornerPt[4];
    unsigned int nReserved[4];
} XQ_CODEREADER_CODE_INFO;

/* One delivered frame. */
typedef struct _XQ_CODEREADER_FRAME_INFO_ {
    unsigned int nFrameNum;     /* device's frame (block) id */
    unsigned int nWidth;        /* pixels */
    unsigned int nHeight;
    unsigned int nFrameLen;     /* bytes of JPEG data */
    uint64_t     nTimeStamp;    /* device time stamp in ns */
    unsigned int nCodeNum;      /* entries used in stCodeInfo */
    XQ_CODEREADER_CODE_INFO stCodeInfo[XQ_CODEREADER_MAX_CODE_NUM];
    unsigned int nReserved[8];
} XQ_CODEREADER_FRAME_INFO;

/* Decoder and encoder settings of a handle. */
typedef struct _XQ_CODEREADER_DECODE_PARAM_ {
    unsigned int nFormats;      /* XQ_FORMAT_* mask; 0 means XQ_FORMAT_DEFAULT */
    unsigned int bTryHarder;    /* slower: rotated matrix codes, linear codes on every 2nd row instead of every 8th; default 0 */
    unsigned int nMaxCodes;     /* stop after this many codes; 0 means XQ_CODEREADER_MAX_CODE_NUM */
    unsigned int nJpegQuality;  /* 1 to 100; 0 means 90 */
    unsigned int nReserved[4];
} XQ_CODEREADER_DECODE_PARAM;

/* ---- Enumeration and sessions ----------------------------------------- */

/*
 * Finds the code readers of the transports in nTLayerType (only
 * XQ_TLAYER_GIGE is served) and fills pstDevList. The records belong to the
 * SDK and stay valid and unchanged until the library is unloaded. Takes about
 * a second.
 */
XQ_API int XQ_CODEREADER_EnumDevices(XQ_CODEREADER_DEVICE_INFO_LIST* pstDevList, unsigned int nTLayerType);

/*
 * Live check, asked of the device itself: could it be opened now in
 * nAccessMode (XQ_ACCESS_*)? False while another client (or another handle
 * of this process) controls it, for a device that does not answer, a NULL
 * record or an unknown mode.
 */
XQ_API bool XQ_CODEREADER_IsDeviceAccessible(const XQ_CODEREADER_DEVICE_INFO* pstDevInfo, unsigned int nAccessMode);

/* Makes a session for the device; the record is copied. *phHandle is set only
 * on success. */
XQ_API int XQ_CODEREADER_CreateHandle(XQ_HANDLE* phHandle, const XQ_CODEREADER_DEVICE_INFO* pstDevInfo);

/* Ends the session: stops grabbing, closes the device and invalidates the
 * handle. A second call returns XQ_ERR_INVALID_HANDLE. Safe while another
 * thread is inside a call on the handle: a pending open or frame wait ends
 * within 50 ms with XQ_ERR_CANCELLED; this call waits for it at most
 * 200 ms (a device command under way closes the device when it ends). */
XQ_API int XQ_CODEREADER_DestroyHandle(XQ_HANDLE hHandle);

/* Opens the device for exclusive control. XQ_ERR_ACCESS_DENIED when another
 * client holds it. The device's GenICam description is checked first
 * (Local: URL only, at most 16 MiB packed and unpacked, a well-formed zip,
 * read within 10 s): XQ_ERR_DESCRIPTION_REFUSED otherwise. XQ_ERR_CANCELLED
 * when the handle is closed or destroyed from another thread meanwhile. */
XQ_API int XQ_CODEREADER_OpenDevice(XQ_HANDLE hHandle);

/* Stops grabbing and closes the device; the handle stays valid. Ends a
 * pending open or frame wait on another thread (XQ_ERR_CANCELLED there). */
XQ_API int XQ_CODEREADER_CloseDevice(XQ_HANDLE hHandle);

/* Registers cbException (NULL to remove it) with pUser. It receives
 * XQ_EXCEPTION_DEVICE_LOST at most once per open when the device is lost. */
XQ_API int XQ_CODEREADER_RegisterExceptionCallBack(XQ_HANDLE hHandle, XQ_EXCEPTION_CALLBACK cbException, void* pUser);

/* Time-out in milliseconds (100 to 600000) after which the device drops the
 * connection when the SDK falls silent (the device's heartbeat time-out).
 * The SDK's own wait for one answer is fixed (5 tries of 500 ms). The device
 * must be open. */
XQ_API int XQ_CODEREADER_GIGE_SetGvcpTimeout(XQ_HANDLE hHandle, unsigned int nMillisec);

/* ---- Features (device must be open) ------------------------------------ */

XQ_API int XQ_CODEREADER_GetEnumValue(XQ_HANDLE hHandle, const char* strKey, XQ_ENUMVALUE* pstValue);
XQ_API int XQ_CODEREADER_SetEnumValue(XQ_HANDLE hHandle, const char* strKey, unsigned int nValue);
XQ_API int XQ_CODEREADER_SetEnumValueByString(XQ_HANDLE hHandle, const char* strKey, const char* strValue);
XQ_API int XQ_CODEREADER_SetCommandValue(XQ_HANDLE hHandle, const char* strKey);

/* ---- Decoding settings ------------------------------------------------- */

XQ_API int XQ_CODEREADER_SetDecodeParam(XQ_HANDLE hHandle, const XQ_CODEREADER_DECODE_PARAM* pstParam);
XQ_API int XQ_CODEREADER_GetDecodeParam(XQ_HANDLE hHandle, XQ_CODEREADER_DECODE_PARAM* pstParam);

/* ---- Grabbing ---------------------------------------------------------- */

/* Starts the stream and the acquisition. The device must be open. */
XQ_API int XQ_CODEREADER_StartGrabbing(XQ_HANDLE hHandle);

/* Stops the acquisition and the stream. XQ_ERR_WRONG_STATE if not grabbing.
 * A frame wait on another thread ends with XQ_ERR_CANCELLED. */
XQ_API int XQ_CODEREADER_StopGrabbing(XQ_HANDLE hHandle);

/*
 * Waits up to nMsec milliseconds for the next frame, encodes it as JPEG,
 * decodes the codes in it and fills pstFrameInfo. *ppData points at the JPEG
 * bytes (pstFrameInfo->nFrameLen of them); the handle owns them and they stay
 * valid until the next call on the handle or its destruction.
 * XQ_ERR_NO_DATA when no complete frame arrived in time (a frame lost on the
 * network is not waited for: trigger again), XQ_ERR_CANCELLED when another
 * thread stops, closes or destroys the handle meanwhile. Linear codes are read when
 * roughly horizontal and at least two scanned rows high.
 */
XQ_API int XQ_CODEREADER_GetOneFrameTimeout(XQ_HANDLE hHandle, unsigned char** ppData, XQ_CODEREADER_FRAME_INFO* pstFrameInfo, unsigned int nMsec);

#ifdef __cplusplus
}
#endif

#endif /* XQ_CODE_READER_CTRL_H */
