// SPDX-License-Identifier: GPL-2.0-only
// GB/T 28181 platform, section stGB28181.
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

#include "CBB/Util/CopyText.h"
#include "CBB/WebCtrl/Handlers/Form.h"
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Handlers/SectionExchange.h"
#include "CBB/WebCtrl/Handlers/VersionInfo.h"

namespace {

constexpr size_t kFormBufferBytes = 512;
// The enable byte: bit 0 registers, bit 7 picks the stream.
constexpr int kStreamBit = 7;

using Block = GB28181Para;
constexpr WebField kFields[] = {
    WEB_FIELD(strFD_Manufacturer), WEB_FIELD(strFD_ModelName),  WEB_FIELD(strFD_ServerIp),
    WEB_FIELD(usFD_ServerPort),    WEB_FIELD(strFD_ServerID),   WEB_FIELD(strFD_DeviceId),
    WEB_FIELD(usFD_DevicePort),    WEB_FIELD(strFD_DeviceUser), WEB_FIELD(strFD_DevicePass),
};

int getGB28181InfoFromNet(CWebCtrl& controller, GB28181Para* para) {
    return QueryBlock(controller, QueryText::GB28181, &CConfig_Task::Import_stGB28181,
                      &DeviceParaRecord::stGB28181, para);
}

// How many video channels the recorder has; 0 when it does not tell.
int QueryChannelCount(CWebCtrl& controller) {
    VersionPara version{};
    getVersionInfoFromNet(controller, &version);
    return static_cast<int>(version.VideoCnt);
}

// Only the first channel's lens ID is written, whatever the channel count.
int setGB28181InfoToNet(CWebCtrl& controller, const GB28181Para& para) {
    SetMessage message;
    message.Open("stGB28181").Number("ucFD_Enable", para.ucFD_Enable);
    AddAttributes(message, kFields, &para).Close(">").Open("stGB28181SubID").Close(">");
    message.Open("SUBDEVID_0")
        .Text("strFD_LensId", para.stGB28181SubID[0].strFD_LensId)
        .Close("/>");
    message.Close("</stGB28181SubID>").Close("</stGB28181>");
    return SendSet(controller, message.Finish());
}

// Reads "*ID*ID*", channel 0 first, from its last piece backwards into the channels from the last
// one down. Pieces for channels that there are not, below 0 or beyond the record, are passed over.
void ReadLensIds(std::string list, int channelCount, GB28181Para* para) {
    if (!list.empty())
        list.pop_back(); // the closing star, which is not looked at
    if (list.size() <= 2)
        return;
    printf("strParaValue = %s\n", list.c_str());
    constexpr long long kSlots = std::size(GB28181Para{}.stGB28181SubID);
    long long channel = channelCount;
    for (size_t star = list.rfind('*'); star != std::string::npos; star = list.rfind('*')) {
        const std::string piece = list.substr(star + 1);
        printf("strIndex = %s\n", piece.c_str());
        if (--channel >= 0 && channel < kSlots)
            CopyText(para->stGB28181SubID[channel].strFD_LensId, piece);
        list.resize(star);
    }
}

} // namespace

void get_GB28181Info(CWebCtrl& controller, mg_connection* connection, mg_http_message*) {
    const HandlerTrace trace(__func__, __LINE__);
    GB28181Para para{};
    const int error = getGB28181InfoFromNet(controller, &para);
    const int channelCount = QueryChannelCount(controller);
    printf("iVideoChnCount ================ %d\n", channelCount);
    const auto& lensId = para.stGB28181SubID[0].strFD_LensId;
    const std::string lensIds = "*" + std::string(lensId, strnlen(lensId, sizeof(lensId))) + "*";
    printf("stGB28181.strFD_LensId  ================== %s\n", lensIds.c_str());

    JsonAnswer answer(connection);
    answer.Member("ucFD_GB28181Enable", para.ucFD_Enable != 0);
    answer.Members(kFields, &para);
    answer.Member("strFD_LensId", lensIds.c_str());
    answer.Member("iVideoChnCount", channelCount);
    answer.Member("ucFD_StreamType", para.ucFD_Enable >> kStreamBit);
    answer.Result(error == 0);
}

void set_GB28181Info(CWebCtrl& controller, mg_connection* connection, mg_http_message* message) {
    Form form(message, kFormBufferBytes);
    GB28181Para para{};
    if (form.Number("ucFD_GB28181Enable") & 1)
        para.ucFD_Enable =
            static_cast<uint8_t>((form.Number("ucFD_StreamType") & 1) << kStreamBit | 1);
    form.Read(kFields, &para);
    printf("stGB28181Info.strFD_ServerIp===========%s\n", para.strFD_ServerIp);
    const std::string lensIds = form.Text("strFD_LensId");
    ReadLensIds(lensIds, QueryChannelCount(controller), &para);
    JsonAnswer::WriteResult(connection, setGB28181InfoToNet(controller, para) == 0);
}
