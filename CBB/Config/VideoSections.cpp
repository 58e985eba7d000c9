// SPDX-License-Identifier: GPL-2.0-only
// Picture, encoding, on-screen display, recording and video detection.
#include "CBB/Config/VideoSections.h"

#include <cstdlib>
#include <cstring>

#include "CBB/Config/Config_Task.h"
#include "CBB/Config/FieldTable.h"
#include "CBB/Util/TextFun.h"

namespace {

// The encoder's unit: regions start at, and span, whole blocks of this many pixels.
constexpr int64_t kBlock = 16;

uint32_t WholeBlocks(int64_t pixels) {
    return static_cast<uint32_t>(pixels / kBlock * kBlock);
}

int StoreRegionStart(const char* text, uint32_t* field) {
    *field = WholeBlocks(ToInt(text));
    return 0;
}

// Always grows, a whole number of blocks by one block: the region never loses its last pixels.
int StoreRegionSpan(const char* text, uint32_t* field) {
    *field = WholeBlocks(ToInt(text) + kBlock);
    return 0;
}

// Decimal numbers, each with a comma after it; what follows the last comma is not read.
int StoreMask(const char* text, uint32_t (*mask)[32]) {
    constexpr std::ptrdiff_t kLongestNumber = 16;
    for (uint32_t& entry : *mask) {
        const char* comma = strchr(text, ',');
        if (!comma || comma - text > kLongestNumber)
            break;
        Store(text, &entry);
        text = comma + 1;
    }
    return 0;
}

} // namespace

template <>
struct Fields<VideoCropPara> {
    using Block = VideoCropPara;
    static constexpr FieldRow rows[] = {
        FIELD(uiFD_X),
        FIELD(uiFD_Y),
        FIELD(uiFD_Width),
        FIELD(uiFD_Height),
    };
};

int CConfig_Task::Import_VideoCrop(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadTable(
        section, "stVideoCropPara", RowIndex::DocumentOrder, Target(record).stVideoCrop);
}

template <>
struct Fields<VideoPara> {
    using Block = VideoPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_VideoMode),
        FIELD(ucFD_VEncFormat),
        FIELD(ucFD_AEncFormat),
    };
};

template <>
struct Fields<VideoChnPara> {
    using Block = VideoChnPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_Resolution),
        FIELD(ucFD_Quality),
        FIELD(ucFD_FrameRate),
        FIELD(ucFD_Gop),
        FIELD(uiFD_BitRate),
        FIELD(uiFD_DisableAudio),
        FIELD(uiFD_DisableVideo),
        FIELD(uiFD_EnableROI),
        FIELD_BY(ucFD_ROI_X, StoreRegionStart),
        FIELD_BY(ucFD_ROI_Y, StoreRegionStart),
        FIELD_BY(ucFD_ROI_Wight, StoreRegionSpan),
        FIELD_BY(ucFD_ROI_Height, StoreRegionSpan),
    };
};

int CConfig_Task::Import_Video(const TiXmlElement* section, DeviceParaRecord* record) {
    VideoPara& target = Target(record).stVideo;
    return ReadAttributesAndTable(
        section, &target, "stVideoPara", RowIndex::OneCharacter, target.stVideoPara);
}

template <>
struct Fields<SubStreamPara> {
    using Block = SubStreamPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_EncodeMode),
        FIELD(ucFD_Resolution),
        FIELD(ucFD_Quality),
        FIELD(ucFD_FrameRate),
        FIELD(uiFD_BitRate),
    };
};

int CConfig_Task::Import_SubStream(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stSubStream);
}

template <>
struct Fields<OsdPara> {
    using Block = OsdPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_DeviceNoEnable),
        FIELD(ucFD_ChnNameEnable),
        FIELD(ucFD_TimeEnable),
        FIELD(ucFD_GPSEnable),
        FIELD(ucFD_LPlateEnable),
        FIELD(ucFD_SpeedEnable),
        FIELD(ucFD_TempEnable),
        FIELD(ucFD_IOEnable),
        FIELD(ucFD_GSensorEnable),
        FIELD(ucFD_BatteryEnable),
    };
};

int CConfig_Task::Import_Osd(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stOsd);
}

template <>
struct Fields<ChnOsdPara> {
    using Block = ChnOsdPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_Resolution),
        FIELD(ucDisplayStyle),
        FIELD(ucPreviewEnable),
    };
};

int CConfig_Task::Import_ChnOsd(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadTable(section, "stChnOSDPara", RowIndex::OneCharacter, Target(record).stChnOsd);
}

template <>
struct Fields<RecordPara> {
    using Block = RecordPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_RecordMode),
        FIELD(ucFD_SDUsage),
        FIELD(ucFD_AutoCoverEnable),
        FIELD(ucFD_AlarmRecordType),
        FIELD(uiFD_PreRecordTime),
        FIELD(uiFD_AlarmRecordTime),
        FIELD(uiFD_AlarmRecordDays),
    };
};

int CConfig_Task::Import_Record(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stRecord);
}

template <>
struct Fields<ChnRecordPara> {
    using Block = ChnRecordPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucRecordEnable),
        FIELD(ucHaveAudio),
        FIELD(ucSubStream),
    };
};

int CConfig_Task::Import_ChnRecord(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadTable(
        section, "stChnRecordPara", RowIndex::OneCharacter, Target(record).stChnRecord);
}

template <>
struct Fields<SnapshotPara> {
    using Block = SnapshotPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_SaveDays),
        FIELD(ucFD_MultiSnapEnable),
        FIELD(uiFD_Interval),
        FIELD(ucFD_SnapCount),
    };
};

int CConfig_Task::Import_Snapshot(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadAttributes(section, &Target(record).stSnapshot);
}

template <>
struct Fields<VdaPara> {
    using Block = VdaPara;
    static constexpr FieldRow rows[] = {
        FIELD(ucFD_Enable),
        FIELD(ucFD_Wday1),
        FIELD(uiStartT1),
        FIELD(uiEndT1),
        FIELD(ucFD_Wday2),
        FIELD(uiStartT2),
        FIELD(uiEndT2),
        FIELD(ucFD_Wday3),
        FIELD(uiStartT3),
        FIELD(uiEndT3),
        FIELD(ucFD_Percent),
        FIELD_BY(uiFD_Mask, StoreMask),
    };
};

int CConfig_Task::Import_Vda(const TiXmlElement* section, DeviceParaRecord* record) {
    return ReadTable(section, "stVdaPara", RowIndex::OneCharacter, Target(record).stVda);
}
