/*
 * XQCameraControl: generic camera control over GigE Vision (and USB3 Vision
 * where the system sees such devices). Enumeration, sessions, the GenICam
 * feature description and its node tree, and typed feature access.
 *
 * While a device is open, every register and memory access that the feature
 * tree causes is recorded. XQ_CC_CloseDevice (and XQ_CC_DestroyHandle on an
 * open device) writes the recording into the handle's dump folder
 * (XQ_CC_SetRegisterDumpFolder; by default the application directory, the
 * folder of the running executable) as
 *     <model>_regfile.dat     integer, float, boolean, enumeration and
 *                             command registers
 *     <model>_strRegFile.dat  string registers
 * where <model> is the text of the device record's GigE model-name field
 * (empty for other transports; a name with '/', '\\' or control characters
 * writes nothing). The format is described in docs/register-dump-format.md.
 *
 * Conventions:
 * - Every function returns XQ_OK (0) or an XQ_ERR_* code (XQSdkDefs.h).
 * - Feature names are NUL-terminated 8-bit texts, matched exactly.
 * - Text fields of records are always NUL-terminated within their size,
 *   except the GigE model name (see XQ_CC_GIGE_DEVICE_INFO).
 * - Thread safety: any function may be called from any thread. Calls on one
 *   handle are serialised; different handles work in parallel.
 */
#ifndef XQ_CAMERA_CONTROL_H
#define XQ_CAMERA_CONTROL_H

#include "XQSdkDefs.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Device records ---------------------------------------------------- */

/* GigE Vision identity, as the device's discovery answer carries it.
 * Addresses: first octet in the most significant byte. */
typedef struct _XQ_CC_GIGE_DEVICE_INFO_ {
    unsigned int  nIpCfgOption;       /* supported IP configuration bits */
    unsigned int  nIpCfgCurrent;      /* current IP configuration bits */
    unsigned int  nCurrentIp;         /* device address */
    unsigned int  nCurrentSubNetMask;
    unsigned int  nDefultGateWay;
    unsigned int  nNetExport;         /* host interface address that found it */
    unsigned char chManufacturerName[32];
    /* The device's bootstrap model bytes exactly, never re-encoded; the dump
     * file names use these bytes. Unlike the other texts it is NUL-terminated
     * only when the model is shorter than 32 bytes: a model that fills the
     * device's 32-byte field without a terminator appears as 32 bytes and no
     * NUL (strnlen(chModelName, 32) == 32), and is 32 bytes long in the
     * code-reader record too. Read it with a bound of 32. */
    unsigned char chModelName[32];
    unsigned char chDeviceVersion[32];
    unsigned char chManufacturerSpecificInfo[48];
    unsigned char chSerialNumber[16];
    unsigned char chUserDefinedName[16];
    unsigned int  nReserved[4];
} XQ_CC_GIGE_DEVICE_INFO;

/* USB3 Vision identity. */
typedef struct _XQ_CC_USB3_DEVICE_INFO_ {
    unsigned short idVendor;
    unsigned short idProduct;
    unsigned char  chVendorName[64];
    unsigned char  chModelName[64];
    unsigned char  chSerialNumber[64];
    unsigned char  chDeviceVersion[64];
    unsigned char  chUserDefinedName[64];
    unsigned char  chDeviceGUID[64];
    unsigned int   nReserved[4];
} XQ_CC_USB3_DEVICE_INFO;

/*
 * One enumerated device. nTLayerType says which block is filled; the other
 * block is all zero bytes (so the GigE texts of a USB device are empty).
 */
typedef struct _XQ_CC_DEVICE_INFO_ {
    unsigned short nMajorVer;     /* GigE Vision version of the device */
    unsigned short nMinorVer;
    unsigned int   nMacAddrHigh;  /* MAC bytes 0-1 in the low 16 bits */
    unsigned int   nMacAddrLow;   /* MAC bytes 2-5 */
    unsigned int   nTLayerType;   /* XQ_TLAYER_GIGE or XQ_TLAYER_USB */
    unsigned int   nReserved[4];
    XQ_CC_GIGE_DEVICE_INFO stGigE;
    XQ_CC_USB3_DEVICE_INFO stUsb3;
    char           chDeviceId[128]; /* SDK's own key of the device; do not change */
} XQ_CC_DEVICE_INFO;

/* Device list: a count and up to XQ_MAX_DEVICE_NUM record pointers. */
typedef struct _XQ_CC_DEVICE_INFO_LIST_ {
    unsigned int       nDeviceNum;
    XQ_CC_DEVICE_INFO* pDeviceInfo[XQ_MAX_DEVICE_NUM];
} XQ_CC_DEVICE_INFO_LIST;

/* ---- Node tree records ------------------------------------------------- */

#define XQ_MAX_XML_NODE_NUM       256
#define XQ_XML_NAME_SIZE          64
#define XQ_XML_TEXT_SIZE          512

/* One feature node. The SDK finds a node again by the contents of this
 * record, so pass records back unchanged. */
typedef struct _XQ_XML_NODE_FEATURE_ {
    unsigned int nInterfaceType; /* XQ_IFT_* */
    unsigned int nVisibility;    /* XQ_VISIBILITY_* */
    char chDescription[XQ_XML_TEXT_SIZE];
    char chDisplayName[XQ_XML_NAME_SIZE];
    char chName[XQ_XML_NAME_SIZE];
    char chToolTip[XQ_XML_TEXT_SIZE];
    unsigned int nReserved[4];  /* SDK's own node key; do not change */
} XQ_XML_NODE_FEATURE;

/* Children of one category, in the order the description lists them. */
typedef struct _XQ_XML_NODES_LIST_ {
    unsigned int        nNodeNum;
    XQ_XML_NODE_FEATURE stNodes[XQ_MAX_XML_NODE_NUM];
} XQ_XML_NODES_LIST;

/* ---- Value records ----------------------------------------------------- */

#define XQ_MAX_STRING_VALUE_SIZE 256

/* A string feature's value (NUL-terminated, cut to 255 bytes) and the
 * longest value the feature can hold. */
typedef struct _XQ_CC_STRINGVALUE_ {
    char    chValue[XQ_MAX_STRING_VALUE_SIZE];
    int64_t nMaxLength;
    unsigned int nReserved[2];
} XQ_CC_STRINGVALUE;

/* ---- Enumeration and sessions ----------------------------------------- */

/*
 * Finds the devices of the transports in nTLayerType (a mask of
 * XQ_TLAYER_GIGE and XQ_TLAYER_USB) and fills pstDevList. The records belong
 * to the SDK and stay valid and unchanged until the library is unloaded, so
 * several threads may enumerate at the same time. Takes about a second.
 */
XQ_API int XQ_CC_EnumDevices(XQ_CC_DEVICE_INFO_LIST* pstDevList, unsigned int nTLayerType);

/* Live check: could the device be opened now in nAccessMode (XQ_ACCESS_*)?
 * False for a NULL record, an unknown mode or a device that does not answer. */
XQ_API bool XQ_CC_IsDeviceAccessible(const XQ_CC_DEVICE_INFO* pstDevInfo, unsigned int nAccessMode);

/* Makes a session for the device; the record is copied. *phHandle is set only
 * on success. */
XQ_API int XQ_CC_CreateHandle(XQ_HANDLE* phHandle, const XQ_CC_DEVICE_INFO* pstDevInfo);

/* Ends the session: closes the device if open (writing the register dumps)
 * and invalidates the handle. A second call returns XQ_ERR_INVALID_HANDLE.
 * Like XQ_CC_CloseDevice, returns XQ_ERR_RESOURCE (handle gone all the same)
 * when the dumps could not be written completely. */
XQ_API int XQ_CC_DestroyHandle(XQ_HANDLE hHandle);

/*
 * Opens the device in nAccessMode (XQ_ACCESS_*). nSwitchoverKey must be 0.
 * XQ_ERR_ACCESS_DENIED when another client holds it. A GigE device's GenICam
 * description is checked first (Local: URL only, at most 16 MiB packed and
 * unpacked, a well-formed zip, read within 10 s): XQ_ERR_DESCRIPTION_REFUSED
 * otherwise. XQ_ERR_CANCELLED when XQ_CC_CloseDevice or XQ_CC_DestroyHandle
 * is called from another thread meanwhile (the open ends within 50 ms).
 * Register recording starts here.
 */
XQ_API int XQ_CC_OpenDevice(XQ_HANDLE hHandle, unsigned int nAccessMode, unsigned short nSwitchoverKey);

/* Closes the device and writes the two register dumps. XQ_ERR_WRONG_STATE if
 * it is not open. The handle stays valid and can be opened again. The device
 * is closed in any case; the result is XQ_ERR_RESOURCE when a dump could not
 * be written completely (missing or read-only folder, disk full), in which
 * case neither older dump file was replaced, and XQ_ERR_INVALID_PARAMETER
 * when the model name is unusable as a file name (nothing written). */
XQ_API int XQ_CC_CloseDevice(XQ_HANDLE hHandle);

/*
 * Sets the folder the register dumps of this handle are written into when
 * the device is closed; NULL or "" means the application directory. The
 * folder is used as given (not created) when the dumps are written, so it
 * may be set before or after opening, any time before closing. Each file is
 * written under a temporary name in that folder, flushed to disk, and then
 * renamed, so a reader never sees half a dump.
 */
XQ_API int XQ_CC_SetRegisterDumpFolder(XQ_HANDLE hHandle, const char* pFolder);

/*
 * Registers cbException (NULL to remove it) with pUser. It receives
 * XQ_EXCEPTION_DEVICE_LOST at most once per open when the device is lost.
 * Allowed before or after opening.
 */
XQ_API int XQ_CC_RegisterExceptionCallBack(XQ_HANDLE hHandle, XQ_EXCEPTION_CALLBACK cbException, void* pUser);

/*
 * Time-out in milliseconds (100 to 600000) after which the device drops the
 * connection when the SDK falls silent (the device's heartbeat time-out).
 * The SDK's own wait for one answer is fixed (5 tries of 500 ms). GigE only;
 * the device must be open with control.
 */
XQ_API int XQ_GIGE_SetGvcpTimeout(XQ_HANDLE hHandle, unsigned int nMillisec);

/* ---- Feature description and node tree --------------------------------- */

/*
 * Copies the device's GenICam XML (unzipped, byte for byte as the device
 * holds it) into pData. *pnDataLen receives its length, also when the buffer
 * is too small (XQ_ERR_BUFFER_TOO_SMALL, nothing written). pData may be NULL
 * with nDataBufSize 0 to ask for the length. The device must be open.
 */
XQ_API int XQ_XML_GetGenICamXML(XQ_HANDLE hHandle, unsigned char* pData, unsigned int nDataBufSize, unsigned int* pnDataLen);

/* The category "Root". */
XQ_API int XQ_XML_GetRootNode(XQ_HANDLE hHandle, XQ_XML_NODE_FEATURE* pstNode);

/* The features of a category. Any other node fails with XQ_ERR_GENICAM and
 * leaves the list with nNodeNum 0. Children that do not exist in the
 * description are skipped. More than XQ_MAX_XML_NODE_NUM children: the first
 * ones and XQ_ERR_BUFFER_TOO_SMALL. */
XQ_API int XQ_XML_GetChildren(XQ_HANDLE hHandle, const XQ_XML_NODE_FEATURE* pstNode, XQ_XML_NODES_LIST* pstNodesList);

/* A node by name. */
XQ_API int XQ_XML_GetNodeFeature(XQ_HANDLE hHandle, const char* strName, XQ_XML_NODE_FEATURE* pstNode);

/* Current access mode (XQ_AM_*) of a node, from its description and its
 * availability rules as they stand now. */
XQ_API int XQ_XML_GetNodeAccessMode(XQ_HANDLE hHandle, const char* strName, unsigned int* penAccessMode);

/* Visibility (XQ_VISIBILITY_*) of a node. */
XQ_API int XQ_XML_GetNodeVisibility(XQ_HANDLE hHandle, const char* strName, unsigned int* penVisibility);

/* Interface type (XQ_IFT_*) of a node. */
XQ_API int XQ_XML_GetNodeInterfaceType(XQ_HANDLE hHandle, const char* strName, unsigned int* penInterfaceType);

/* ---- Feature values ---------------------------------------------------- */
/* The device must be open. A feature of another type gives XQ_ERR_GENICAM;
 * one that is not readable or writable now gives XQ_ERR_ACCESS_DENIED. */

XQ_API int XQ_CC_GetIntValue(XQ_HANDLE hHandle, const char* strKey, int64_t* pnValue);
XQ_API int XQ_CC_SetIntValue(XQ_HANDLE hHandle, const char* strKey, int64_t nValue);

XQ_API int XQ_CC_GetFloatValue(XQ_HANDLE hHandle, const char* strKey, double* pfValue);
XQ_API int XQ_CC_SetFloatValue(XQ_HANDLE hHandle, const char* strKey, double fValue);

XQ_API int XQ_CC_GetBoolValue(XQ_HANDLE hHandle, const char* strKey, bool* pbValue);
XQ_API int XQ_CC_SetBoolValue(XQ_HANDLE hHandle, const char* strKey, bool bValue);

/* Values longer than 255 bytes are cut at 255 bytes. */
XQ_API int XQ_CC_GetStringValue(XQ_HANDLE hHandle, const char* strKey, XQ_CC_STRINGVALUE* pstValue);
XQ_API int XQ_CC_SetStringValue(XQ_HANDLE hHandle, const char* strKey, const char* strValue);

/* Current value and the values of the entries available now (at most
 * XQ_MAX_ENUM_SUPPORTED_NUM; more give the first ones). */
XQ_API int XQ_CC_GetEnumValue(XQ_HANDLE hHandle, const char* strKey, XQ_ENUMVALUE* pstValue);
/* By entry value. */
XQ_API int XQ_CC_SetEnumValue(XQ_HANDLE hHandle, const char* strKey, unsigned int nValue);
/* By entry name (symbolic). */
XQ_API int XQ_CC_SetEnumValueByString(XQ_HANDLE hHandle, const char* strKey, const char* strValue);
/* Name of the entry with value nValue, NUL-terminated in pBuf. */
XQ_API int XQ_CC_GetEnumEntrySymbolic(XQ_HANDLE hHandle, const char* strKey, unsigned int nValue, char* pBuf, unsigned int nBufSize);

/* Executes a command feature. */
XQ_API int XQ_CC_SetCommandValue(XQ_HANDLE hHandle, const char* strKey);

#ifdef __cplusplus
}
#endif

#endif /* XQ_CAMERA_CONTROL_H */
