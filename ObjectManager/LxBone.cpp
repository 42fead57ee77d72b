#include "ObjectManager/LxBone.h"
