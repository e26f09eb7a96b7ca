// Typed access to the features of a GenICam tree, with the SDK's access
// rules and return codes. Callers serialise use of one tree.
#pragma once

#include "XQSdkDefs.h"

#include <arv.h>

#include <cstdint>
#include <string>

namespace xq::features {

// XQ_IFT_* of a node.
unsigned int interfaceTypeOf(ArvGcNode* node);
// XQ_VISIBILITY_* of a node.
unsigned int visibilityOf(ArvGcFeatureNode* node);
// XQ_AM_* of a node as its rules stand now; may read registers.
unsigned int accessModeOf(ArvGcFeatureNode* node);

// Finds a feature node by name: XQ_ERR_INVALID_PARAMETER for a NULL or empty
// name, XQ_ERR_GENICAM when there is none.
int find(ArvGc* genicam, const char* name, ArvGcFeatureNode** node);

int getInteger(ArvGc* genicam, const char* name, std::int64_t* value);
int setInteger(ArvGc* genicam, const char* name, std::int64_t value);
int getFloat(ArvGc* genicam, const char* name, double* value);
int setFloat(ArvGc* genicam, const char* name, double value);
int getBoolean(ArvGc* genicam, const char* name, bool* value);
int setBoolean(ArvGc* genicam, const char* name, bool value);
int getString(ArvGc* genicam, const char* name, std::string* value, std::int64_t* maxLength);
int setString(ArvGc* genicam, const char* name, const char* value);
int getEnumeration(ArvGc* genicam, const char* name, XQ_ENUMVALUE* value);
int setEnumerationValue(ArvGc* genicam, const char* name, std::int64_t value);
int setEnumerationSymbol(ArvGc* genicam, const char* name, const char* symbol);
int enumerationSymbolOf(ArvGc* genicam, const char* name, std::int64_t value, std::string* symbol);
int executeCommand(ArvGc* genicam, const char* name);

} // namespace xq::features
