// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <string>

// Whether the name is one of a page with server-side include tags: it ends in .shtml or .shtm.
bool IsIncludePage(const std::string& path);

// Whether there is a regular file of this name.
bool IsFile(const std::string& path);

// The page at `path` with its tags carried out:
//
//     <!--#call setting1 -->       the setting's value, HTML-escaped; nothing for an unknown one
//     <!--#include file="x" -->    the file x beside the page, itself rendered if it is a page
//
// Files outside `webRoot` (symbolic links resolved), missing files, other tags and includes
// nested deeper than 5 leave nothing in their place. No tag runs a command. A page reads 1 MiB and
// carries out 1000 tags at most, its included files' counted; it goes without what lies beyond.
std::string RenderIncludePage(const std::string& path, const std::string& webRoot);
