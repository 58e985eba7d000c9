// SPDX-License-Identifier: GPL-2.0-only
// Picture, encoding, on-screen display, recording and video detection. Naming and texts as in
// WebSections.h.
#pragma once

#include <cstdint>

struct VideoCropPara {
    uint32_t uiFD_X;
    uint32_t uiFD_Y;
    uint32_t uiFD_Width;
    uint32_t uiFD_Height;
};

struct VideoChnPara {
    uint8_t ucFD_Resolution;
    uint8_t ucFD_Quality;
    uint8_t ucFD_FrameRate;
    uint8_t ucFD_Gop;
    uint32_t uiFD_BitRate;
    uint32_t uiFD_DisableAudio;
    uint32_t uiFD_DisableVideo;
    uint32_t uiFD_EnableROI;
    uint32_t ucFD_ROI_X; // the region of interest, in whole 16-pixel blocks of the encoder
    uint32_t ucFD_ROI_Y;
    uint32_t ucFD_ROI_Wight;
    uint32_t ucFD_ROI_Height;
};

struct VideoPara {
    uint8_t ucFD_VideoMode;
    uint8_t ucFD_VEncFormat;
    uint8_t ucFD_AEncFormat;
    VideoChnPara stVideoPara[1];
};

struct SubStreamPara {
    uint8_t ucFD_EncodeMode;
    uint8_t ucFD_Resolution;
    uint8_t ucFD_Quality;
    uint8_t ucFD_FrameRate;
    uint32_t uiFD_BitRate;
};

struct OsdPara {
    uint8_t ucFD_DeviceNoEnable;
    uint8_t ucFD_ChnNameEnable;
    uint8_t ucFD_TimeEnable;
    uint8_t ucFD_GPSEnable;
    uint8_t ucFD_LPlateEnable;
    uint8_t ucReserved; // a switch that no attribute carries
    uint8_t ucFD_SpeedEnable;
    uint8_t ucFD_TempEnable;
    uint8_t ucFD_IOEnable;
    uint8_t ucFD_GSensorEnable;
    uint8_t ucFD_BatteryEnable;
};

struct ChnOsdPara {
    char ucFD_Resolution[14]; // a text, whatever the attribute's name suggests
    uint8_t ucDisplayStyle;
    uint8_t ucPreviewEnable;
};

struct RecordPara {
    uint8_t ucFD_RecordMode;
    uint8_t ucFD_SDUsage;
    uint8_t ucFD_AutoCoverEnable;
    uint8_t ucFD_AlarmRecordType;
    uint32_t uiFD_PreRecordTime;
    uint32_t uiFD_AlarmRecordTime;
    uint32_t uiFD_AlarmRecordDays;
};

struct ChnRecordPara {
    uint8_t ucRecordEnable;
    uint8_t ucHaveAudio;
    uint8_t ucSubStream;
};

struct SnapshotPara {
    uint8_t ucFD_SaveDays;
    uint8_t ucFD_MultiSnapEnable;
    uint32_t uiFD_Interval;
    uint8_t ucFD_SnapCount;
};

struct VdaPara {
    uint8_t ucFD_Enable;
    uint8_t ucFD_Wday1;
    uint32_t uiStartT1;
    uint32_t uiEndT1;
    uint8_t ucFD_Wday2;
    uint32_t uiStartT2;
    uint32_t uiEndT2;
    uint8_t ucFD_Wday3;
    uint32_t uiStartT3;
    uint32_t uiEndT3;
    uint8_t ucFD_Percent;
    uint32_t uiFD_Mask[32];
};
