// LxAnimationSet: named animation curves, the unit in which animation is stored and loaded.
//
// Files: a set is a folder or a zip archive (".zip"/".lmx", as LxArchive::Create decides) holding "manifest.txt".
// Its first line is "[LxAnimationSet Manifest v1.0]" (then one line per curve: the curve name and the name of
// the curve's own file in the archive, blank-separated) or "[LxAnimationSet Manifest v1.1]" (then one curve name
// per line; the curves lie in that order in the single file "PackedAnimation"). Every curve file holds curve
// streams (LxAnimationCurve::ReadCurveStream).
//
// Loading is all or nothing: LoadFile reads every curve before it adds any, so a failed load leaves the set as it
// was; a name met twice is a warning and the first curve is kept. Saving writes curves in name order, so saving
// a loaded set reproduces its files byte for byte; a failed save removes the half-written zip.
//
// Ownership: curves are shared (LxCountedPtr); a curve may belong to several sets, and changing it changes it in
// all of them. CreateFromFile returns a new set the caller deletes. Failure: logged, false or null. Not
// thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxHashMap.h"
#include "Common/LxString.h"
#include "ObjectManager/LxAnimationCurve.h"

class LxArchive;

class LX_API LxAnimationSet
{
public:
    typedef LxHashMap<LxString, LxCountedPtr<LxAnimationCurve>, LxStringHasher> CurveMap;

    LxAnimationSet() = default;

    // Refuses a null curve and a second curve of one name ("Attempted to add a second curve named: NAME to the
    // animation set.").
    bool AddCurve(const LxString& name, const LxCountedPtr<LxAnimationCurve>& curve);
    // The curve, or an empty pointer.
    LxCountedPtr<LxAnimationCurve> GetCurve(const LxString& name) const;
    // False when no curve has that name.
    bool RemoveCurve(const LxString& name);
    void Clear() { m_curves.Clear(); }
    unsigned int GetCount() const { return m_curves.GetCount(); }
    bool IsEmpty() const { return m_curves.GetCount() == 0; }
    // Appends every curve name, sorted byte-wise.
    void GetAllCurveNames(LxArray<LxString>& names) const;
    // Adds every curve of `other` (shared, not copied). Names this set already has are refused one by one, as
    // AddCurve does; the others are still added. False when any was refused.
    bool AddCurvesFromSet(const LxAnimationSet& other);
    // The largest animation length among the curves; 0 for an empty set.
    float GetMaxAnimationLength() const;
    const CurveMap& GetCurves() const { return m_curves; }

    // Adds the curves of the set at `path` (folder or zip). All or nothing; see above.
    bool LoadFile(const LxString& path);
    // The same from an archive that is already open (a search path, a zip inside a bigger data set).
    bool LoadFromArchive(const LxArchive& archive);
    // A new set loaded from `path`, or null.
    static LxAnimationSet* CreateFromFile(const LxString& path);
    // Writes the set to `path`: a new zip archive when the path names one (".zip"/".lmx"), else into the existing
    // folder `path`. packed: one "PackedAnimation" file (manifest v1.1); otherwise one file per curve (v1.0).
    bool SaveToFile(const LxString& path, bool packed) const;

private:
    // `path` names the archive in the missing-manifest message.
    bool Load(const LxArchive& archive, const LxString& path);

    CurveMap m_curves;
};
