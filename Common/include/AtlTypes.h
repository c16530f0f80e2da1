// Runs in the client and in the broker. The ATL types of the interface. With Microsoft's compiler
// these are ATL's own types. Other compilers use the types of ComBstr.h and StringW.h, which have
// the same layouts and the same ownership rules.
#pragma once

#include <windows.h>
// oleauto.h needs windows.h before it
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
