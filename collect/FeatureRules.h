#pragma once
// Which nodes of the feature tree a walk reads.

#include "XQCameraControl.h"

namespace collect {

// Nodes that are not implemented, not available now, undefined or caught in
// a cycle are not read. Write-only ones are tried: the failed read is logged.
constexpr bool isSkippedAccessMode(unsigned int accessMode)
{
    return accessMode == XQ_AM_NI || accessMode == XQ_AM_NA || accessMode == XQ_AM_UNDEFINED
        || accessMode == XQ_AM_CYCLE;
}

// Beginner, expert and guru features; invisible ones stay unread.
constexpr bool isReadVisibility(unsigned int visibility)
{
    return visibility <= XQ_VISIBILITY_GURU;
}

// Integer, boolean, float, string and enumeration nodes carry values.
constexpr bool isValueInterfaceType(unsigned int interfaceType)
{
    return interfaceType == XQ_IFT_IINTEGER || interfaceType == XQ_IFT_IBOOLEAN || interfaceType == XQ_IFT_IFLOAT
        || interfaceType == XQ_IFT_ISTRING || interfaceType == XQ_IFT_IENUMERATION;
}

} // namespace collect
