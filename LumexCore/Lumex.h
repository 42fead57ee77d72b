// Lumex: the portable API of the framework in one include.
// Platform classes (the Direct3D 12 device, render manager and window manager) have their own headers.
#pragma once

// Core services
#include "Common/LxApi.h"
#include "Common/LxArchive.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxFile.h"
#include "Common/LxFileSystemArchive.h"
#include "Common/LxHashMap.h"
#include "Common/LxInterlockedCounter.h"
#include "Common/LxList.h"
#include "Common/LxLogListener.h"
#include "Common/LxLogManager.h"
#include "Common/LxMD5Hash.h"
#include "Common/LxMemory.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxSearchPath.h"
#include "Common/LxSerializer.h"
#include "Common/LxStandardFile.h"
#include "Common/LxString.h"
#include "Common/LxZipArchive.h"
#include "Common/LxZippedInputFile.h"
#include "Common/LxZippedOutputFile.h"
