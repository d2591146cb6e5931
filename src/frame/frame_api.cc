// The flat functions of the frame that are not about versions or handles.
#include "frame/frame.h"
#include "frame/reg_debug.h"

ZxPolDebugFunction zxpol_setDebugFunction(ZxPolDebugFunction function, int* error) {
    return zxpol::frame::run(error, [&] {
        *error = ZXPOL_S_OK;
        return ZxRegDebug::setDebugFunction(function);
    });
}
