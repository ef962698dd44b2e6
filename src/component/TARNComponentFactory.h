#pragma once

#include "platform/hx/HXContext.h"
#include "platform/hx/HXHost.h"

class TARNComponentBuilder;

/// Makes components.
class TARNComponentFactory {
 public:
    virtual ~TARNComponentFactory() = default;
    /// The caller owns the component. Null if it could not be made.
    TARNComponentBuilder* MakeBuilder(HXContext* const& context, HXHost*& host);
};
