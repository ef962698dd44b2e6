#pragma once

#include "platform/hx/HXStatus.h"

/// Calls a function of one of the host's structures with its handle in front: `CallHost(context,
/// &HXContext::GetModelId, &id, errorCode)`. A missing structure or function counts as a call that failed.
template <typename Structure, typename Function, typename... Arguments>
unsigned CallHost(const Structure* structure, Function Structure::*function, Arguments... arguments) {
    if (structure == nullptr || structure->*function == nullptr) return HX_BAD_HANDLE;
    return (structure->*function)(structure->handle, arguments...);
}
