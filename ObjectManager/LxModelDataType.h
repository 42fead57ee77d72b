// LxModelDataType: the kind of a data item in a model archive. The values are those of the manifest's type words
// ("VB", "IB", "TEX", "ADB") in that order.
#pragma once

enum LxModelDataType
{
    LX_MODEL_DATA_VB = 0,
    LX_MODEL_DATA_IB = 1,
    LX_MODEL_DATA_TEX = 2,
    LX_MODEL_DATA_ADB = 3
};
