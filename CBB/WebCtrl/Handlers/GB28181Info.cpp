// SPDX-License-Identifier: GPL-2.0-only
// GB/T 28181 platform, section stGB28181.
#include <cstring>
#include <iterator>
#include <string>

#include "CBB/Util/CopyText.h"
#include "CBB/WebCtrl/Handlers/Form.h"
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Handlers/SectionExchange.h"
#include "CBB/WebCtrl/Handlers/VersionInfo.h"
#include "CBB/WebCtrl/PrintLine.h"

namespace {

constexpr size_t kFormBufferBytes = 512;
// The enable byte: bit 0 registers, bit 7 picks the stream.
constexpr int kStreamBit = 7;

using Block = GB28181Para;
constexpr WebField kFields[] = {
    WEB_FIELD(strFD_Manufacturer), WEB_FIELD(strFD_ModelName),  WEB_FIELD(strFD_ServerIp),
    WEB_FIELD(usFD_ServerPort),    WEB_FIELD(strFD_ServerID),   WEB_FIELD(strFD_DeviceId),
    WEB_FIELD(usFD_DevicePort),    WEB_FIELD(strFD_DeviceUser), WEB_SECRET(strFD_DevicePass),
};

int getGB28181InfoFromNet(CWebCtrl& controller, GB28181Para* para) {
    return QueryBlock(controller, "stGB28181", &CConfig_Task::Import_stGB28181,
                      &DeviceParaRecord::stGB28181, para);
}

// The number of video channels; 0 when the recorder does not answer.
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

// Reads "*ID*ID*", which lists channel 0 first. The last piece belongs to the last channel, so the
// list is read backwards. A piece whose channel is below 0 or beyond the record is ignored.
void ReadLensIds(std::string list, int channelCount, GB28181Para* para) {
    if (!list.empty())
        list.pop_back(); // the closing star, or whatever stands there
    if (list.size() <= 2)
        return;
    PrintLine("strParaValue = ", Foreign{list}, "\n");
    constexpr long long kSlots = std::size(GB28181Para{}.stGB28181SubID);
    long long channel = channelCount;
    for (size_t star = list.rfind('*'); star != std::string::npos; star = list.rfind('*')) {
        const std::string piece = list.substr(star + 1);
        PrintLine("strIndex = ", Foreign{piece}, "\n");
        --channel;
        if (channel >= 0 && channel < kSlots)
            CopyText(para->stGB28181SubID[channel].strFD_LensId, piece);
        list.resize(star);
    }
}

} // namespace

void get_GB28181Info(CWebCtrl& controller, std::string_view, JsonAnswer& answer) {
    const HandlerTrace trace(__func__, __LINE__);
    GB28181Para para{};
    const int error = getGB28181InfoFromNet(controller, &para);
    const int channelCount = QueryChannelCount(controller);
    PrintLine("iVideoChnCount ================ ", channelCount, "\n");
    const auto& lensId = para.stGB28181SubID[0].strFD_LensId;
    const std::string lensIds = "*" + std::string(lensId, strnlen(lensId, sizeof(lensId))) + "*";
    PrintLine("stGB28181.strFD_LensId  ================== ", Foreign{lensIds}, "\n");

    answer.Member("ucFD_GB28181Enable", para.ucFD_Enable != 0);
    answer.Members(kFields, &para);
    answer.Member("strFD_LensId", lensIds.c_str());
    answer.Member("iVideoChnCount", channelCount);
    answer.Member("ucFD_StreamType", para.ucFD_Enable >> kStreamBit);
    answer.Result(error == 0);
}

void set_GB28181Info(CWebCtrl& controller, std::string_view body, JsonAnswer& answer) {
    Form form(body, kFormBufferBytes);
    GB28181Para para{};
    if (form.Number("ucFD_GB28181Enable") & 1)
        para.ucFD_Enable =
            static_cast<uint8_t>((form.Number("ucFD_StreamType") & 1) << kStreamBit | 1);
    form.Read(kFields, &para);
    PrintLine("stGB28181Info.strFD_ServerIp===========", Foreign{para.strFD_ServerIp}, "\n");
    const std::string lensIds = form.Text("strFD_LensId");
    ReadLensIds(lensIds, QueryChannelCount(controller), &para);
    answer.WriteResult(setGB28181InfoToNet(controller, para) == 0);
}
