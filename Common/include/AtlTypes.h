// The ATL types of the interface: ATL's own with Microsoft's compiler, elsewhere the module's, with
// the same layouts and the same ownership rules.
#pragma once

#include <windows.h>
// the OLE headers need windows.h before them
#include <oleauto.h>

#ifdef _MSC_VER
#include <atlbase.h>
#include <atlstr.h>
#else
#include "AtlException.h"
#include "ComBstr.h"
#include "StringW.h"
#endif

using ATL::CComBSTR;
using ATL::CStringW;

static_assert(sizeof(CComBSTR) == 8 && sizeof(CStringW) == 8);
