// LxParticleGroupLoader: loads a particle group from its archive (a folder, or a zip file when the path ends in
// ".zip" or ".lmx"): "particleFile.txt" holds the particle text, and the optional "texturemapping.txt" maps the
// texture names the text uses to the files of the archive, one "name = file" per line (blank lines and lines
// starting with "//" are skipped; either side may be in double quotes). Every texture the systems name must then
// be found in the archive and is created through the builder's CreateTexture.
//
// Messages (errors), the names in double quotes:
//   "rParticleFile is is invalid" (an empty path), Error opening particle file in archive "<archive>",
//   Error reading particle file "<file>", Invalid particle group file "<file>" (any error in the text; the parser
//   has reported what it found), Error opening texture remapping file in archive "<archive>",
//   Error reading texture remapping data from "<file>", Can't find referenced texture "<file>" in archive
//   "<archive>", Could not create texture for particle system "<system>": <file>, and after any texture failure
//   Error loading textures from "<archive>".
// The builder is reset before the text is parsed (its animation set stays). Every failure returns null and frees
// what was built; the caller owns the group returned. Stateless: separate calls may run on separate threads with
// separate builders.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxHashMap.h"
#include "Common/LxString.h"

class LxArchive;
class LxParticleBuilder;
class LxParticleGroupDesc;

class LX_API LxParticleGroupLoader
{
public:
    typedef LxHashMap<LxString, LxString, LxStringHasher> TextureMapping;

    static LxParticleGroupDesc* Load(const LxString& rParticleFile, LxParticleBuilder& builder);
    static LxParticleGroupDesc* LoadFromArchive(const LxArchive& archive, LxParticleBuilder& builder);
    // Adds the lines of a texture remapping text to `mapping`; false (mapping partly filled) at a line that is not
    // "name = file".
    static bool ParseTextureMapping(const LxString& text, TextureMapping& mapping);
};
