// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <string>

struct mg_connection;
struct mg_http_message;

/// Answers a request for a page whose name ends in .shtml or .shtm, or for a folder whose index
/// page is one. Returns false, having done nothing, for every other request.
bool ServeIncludePage(mg_connection* connection, mg_http_message* message, const char* webRoot);

/// The page at `path` with its server-side include tags carried out:
///
///     <!--#call setting1 -->       the setting's value, HTML-escaped; nothing for an unknown one
///     <!--#include file="x" -->    the file x beside the page, itself rendered if it is a page
///
/// Files outside `webRoot` (symbolic links resolved), missing files, other tags and includes
/// nested deeper than 5 leave nothing in their place. No tag runs a command.
std::string RenderIncludePage(const std::string& path, const std::string& webRoot);
