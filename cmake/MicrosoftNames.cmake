# cmake -DFROM=... -DTO=... -P MicrosoftNames.cmake: copies an export definition file without the names
# that GCC makes (_Z...).
file(READ ${FROM} text)
string(REGEX REPLACE "\n *_Z[^\n]*" "" text "${text}")
string(REGEX REPLACE " = _Z[^\n]*" "" text "${text}")
file(WRITE ${TO} "${text}")
