// SPDX-License-Identifier: GPL-2.0-only
#pragma once

// A link to the recorder's main application for one exchange: one datagram there, one back.
// CWebCtrl::OpenLink opens it.
class ControlLink {
public:
    virtual ~ControlLink() = default;

    // Sends one datagram. Returns 0, or -1 when the kernel did not take it.
    virtual int SendDataToHost(const char* data, int len) = 0;
    // Waits up to 5 s for one datagram of at most 1024 bytes and copies its text, up to a first
    // NUL, into `out` (kReplyCapacity bytes). Returns 0 with the received byte count in `*outLen`,
    // -1 on a failure or what is no reply, -2 when nothing came.
    virtual int RecvDataFromHost(char* out, int* outLen) = 0;
};
