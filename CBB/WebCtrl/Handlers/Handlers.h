// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// The request handlers: get_X reads a parameter group from the main application and answers it as
// JSON, set_X writes the form fields of the request's body. Each answers its request completely.

class CWebCtrl;
struct mg_connection;
struct mg_http_message;

using Handler = void (*)(CWebCtrl& controller, mg_connection* connection, mg_http_message* message);

#define DECLARE_HANDLER(name)                                                                      \
    void name(CWebCtrl& controller, mg_connection* connection, mg_http_message* message)

DECLARE_HANDLER(get_LangInfo);
DECLARE_HANDLER(set_LangInfo);
DECLARE_HANDLER(get_BaseInfo);
DECLARE_HANDLER(set_BaseInfo);
DECLARE_HANDLER(get_MirrorInfo);
DECLARE_HANDLER(set_MirrorInfo);
DECLARE_HANDLER(get_NetWModeInfo);
DECLARE_HANDLER(set_NetWModeInfo);
DECLARE_HANDLER(get_VCmsInfo);
DECLARE_HANDLER(set_VCmsInfo);
DECLARE_HANDLER(get_WifiInfo);
DECLARE_HANDLER(set_WifiInfo);
DECLARE_HANDLER(get_GNetInfo);
DECLARE_HANDLER(set_GNetInfo);
DECLARE_HANDLER(get_GB28181Info);
DECLARE_HANDLER(set_GB28181Info);
DECLARE_HANDLER(get_cpu_usage);
DECLARE_HANDLER(get_VersionInfo);
DECLARE_HANDLER(get_SystemInfo);

#undef DECLARE_HANDLER
