// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <string_view>

// The request handlers, one for each row of Routes.inc: get_X reads a parameter group from the main
// application, set_X writes the form fields of the request's body. Each writes the whole answer.

class CWebCtrl;
class JsonAnswer;

using Handler = void (*)(CWebCtrl& controller, std::string_view body, JsonAnswer& answer);

#define ROUTE(handler, announced)                                                                  \
    void handler(CWebCtrl& controller, std::string_view body, JsonAnswer& answer);
#include "CBB/WebCtrl/Handlers/Routes.inc"

struct Route {
    std::string_view path; // as it stands in the request, `/set_...` if it writes
    Handler handler;
    const char* announced; // printed before the call
};

inline constexpr Route kRoutes[] = {
#define ROUTE(handler, announced) {"/" #handler, handler, announced},
#include "CBB/WebCtrl/Handlers/Routes.inc"
};

constexpr bool Writes(const Route& route) {
    return route.path.substr(0, 5) == "/set_";
}
