# cmake -DFROM=... -DTO=... -P: an export definition file without the Itanium names.
file(READ ${FROM} text)
string(REGEX REPLACE "\n *_Z[^\n]*" "" text "${text}")
string(REGEX REPLACE " = _Z[^\n]*" "" text "${text}")
file(WRITE ${TO} "${text}")
