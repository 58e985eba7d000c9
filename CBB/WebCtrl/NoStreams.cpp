// SPDX-License-Identifier: GPL-2.0-only
// TinyXML's header includes <iostream>. That makes each program start the standard streams, and
// with them every locale: 600 KiB of an executable that has the C++ library in it. Nobody uses
// these streams. What starts and ends them does nothing here, so that the linker takes none of it.

void StartStreams() __asm__("_ZNSt8ios_base4InitC1Ev");
void EndStreams() __asm__("_ZNSt8ios_base4InitD1Ev");
void LinkStreams() __asm__("_ZSt21ios_base_library_initv"); // their start since version 13

void StartStreams() {}
void EndStreams() {}
void LinkStreams() {}
