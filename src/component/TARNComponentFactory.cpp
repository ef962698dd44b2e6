#include "component/TARNComponentFactory.h"

#include "component/TARNComponentBuilder.h"

TARNComponentBuilder* TARNComponentFactory::MakeBuilder(HXContext* const& context, HXHost*& host) {
    try {
        return new TARNComponentBuilder(context, host);
    } catch (...) {
        return nullptr;
    }
}
