// Part of tessel. The table that explains the results of the functions of TesselHost.h, which only
// a broker's host calls. tessel/ResultCodes.h explains the results of a client's calls.
#pragma once

#include "TesselHost.h"
#include "tessel/ResultCodes.h"

inline constexpr tessel::ResultCode kChannelCodes[] = {
    {SL_CHANNEL_SUCCESS, "SL_CHANNEL_SUCCESS", "the function has done its work", "nothing"},
    {SL_CHANNEL_NOT_INITIALIZED, "SL_CHANNEL_NOT_INITIALIZED", "there is no channel",
     "call InitComm first; if the host has called UninitComm to end, end the loop"},
    {SL_CHANNEL_BUFFER_TOO_SMALL, "SL_CHANNEL_BUFFER_TOO_SMALL",
     "the request does not fit into the buffer",
     "call ReadMessage again with a buffer of the size that it has returned"},
    {SL_CHANNEL_CLOSED, "SL_CHANNEL_CLOSED",
     "the scheme is invalid, the call is out of order, or the channel was closed",
     "call InitComm, and then for each request ReadMessage and WriteMessage once"},
    {SL_CHANNEL_NOT_CREATED, "SL_CHANNEL_NOT_CREATED", "the broker's pipe could not be created",
     "end the other broker of this scheme and address, or use another scheme"},
    {SL_CHANNEL_INVALID_ARGUMENT, "SL_CHANNEL_INVALID_ARGUMENT",
     "an argument is null that must not be", "pass a buffer, a size and a message"},
    {SL_CHANNEL_CANNOT_READ, "SL_CHANNEL_CANNOT_READ", "no request could be read from the client",
     "call ReadMessage again, for the next client"},
    {SL_CHANNEL_CANNOT_WRITE, "SL_CHANNEL_CANNOT_WRITE", "the answer could not be sent",
     "call ReadMessage again, for the next client"},
    {SL_CHANNEL_NO_CLIENT, "SL_CHANNEL_NO_CLIENT", "no client connected in time",
     "call ReadMessage again, or pass a longer connectTimeout to InitComm"},
};
