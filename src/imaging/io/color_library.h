// Little CMS, loaded when the first colour profile or picture of inks is met.
#pragma once

#include <lcms2.h>
#include <lcms2_plugin.h>

#include "imaging/io/late_codec.h"

namespace skarnel::io {

LateLibraries& colorLibrary();

#define SKARNEL_COLOR(each)                                                                        \
    each(cmsBuildGamma) each(cmsBuildParametricToneCurve) each(cmsCloseProfile)                    \
        each(cmsCreateProfilePlaceholder) each(cmsCreateRGBProfile) each(cmsCreateTransform)       \
            each(cmsCreate_sRGBProfile) each(cmsD50_XYZ) each(cmsDeleteTransform)                  \
                each(cmsDoTransform) each(cmsFloat2LabEncoded) each(cmsFreeToneCurve)              \
                    each(cmsGetProfileInfoASCII) each(cmsLab2XYZ) each(cmsOpenProfileFromMem)      \
                        each(cmsPipelineAlloc) each(cmsPipelineFree) each(cmsPipelineInsertStage)  \
                            each(cmsPlugin) each(cmsSaveProfileToMem) each(cmsSetColorSpace)       \
                                each(cmsSetDeviceClass) each(cmsSetPCS) each(cmsSetProfileVersion) \
                                    each(cmsStageAllocCLut16bit) each(cmsStageFree)                \
                                        each(cmsStageSampleCLut16bit) each(cmsWriteTag)            \
                                            each(cmsXYZ2Lab)
SKARNEL_COLOR(SKARNEL_LATE)

}  // namespace skarnel::io
