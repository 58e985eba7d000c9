// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include "XmlNode.h"

// The recorder's parameters: an element `RecorderState` whose children are the sections, just as
// answers carry them. A set may name only what the state holds: without a section or an attribute
// in its state file, the simulator plays a recorder that does not know it.

// The state that is compiled in: every attribute of every section, each with its own value.
XmlNode SampleState();

// Reads a state from a document's text. If that is not well-formed or is no state, returns false
// with a sentence in `error`.
bool ParseState(const std::string& text, XmlNode& state, std::string& error);

enum class Loaded { Yes, NoFile, Failed };

// Reads a state file of at most 64 KiB. `error` is set with `Failed`.
Loaded LoadState(const std::string& path, XmlNode& state, std::string& error);

// Replaces the file as a whole: written beside it, synchronised and renamed over it, so that a
// reader, or a power cut, finds the old state or the new one. False with `error` set; the old
// file then still stands.
bool SaveState(const std::string& path, const XmlNode& state, std::string& error);

// Gives `target` the values that `change` names: attributes by name without regard to case, child
// elements by their exact name. False when `change` names something that `target` does not have;
// `target` may then be changed in part.
bool Merge(XmlNode& target, const XmlNode& change);

// Applies one "SECTION.ATTR=VALUE"; rows are reached as in
// "stGB28181.stGB28181SubID.SUBDEVID_0.strFD_LensId=1". False when the state has no such place.
bool Override(XmlNode& state, const std::string& assignment);
