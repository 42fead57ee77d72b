// LxObjectListener: told when a scene object it is attached to has been updated for a frame or reloaded from disk.
// Attached with LxObject::AttachListener; the object does not own it, and the listener must be detached before it
// goes away. Called on the thread that updates or reloads the object (the frame thread).
#pragma once

#include "Common/LxApi.h"

class LxObject;

class LX_API LxObjectListener
{
public:
    virtual ~LxObjectListener() = default;
    // After the object's own UpdateObject(time) work.
    virtual void OnObjectUpdate(LxObject* object, double time)
    {
        (void)object;
        (void)time;
    }
    // After the object's data was replaced by a reload.
    virtual void OnObjectReload(LxObject* object) { (void)object; }
};
