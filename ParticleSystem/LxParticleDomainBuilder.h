// LxParticleDomainBuilder: turns the "Shape <type> ... EndShape" block of a particle file into an
// LxParticleDomain: checks the type and every parameter against the type's table (names, and the value form:
// three numbers, four numbers, one number or a boolean), and fills the parameters the file left out with their
// defaults (LxParticleDomain lists them). Messages go to the particle builder given (with its file position):
// "Unknown particle domain type: %s", "Invalid shape parameter %s for %s domain", "Shape parameter %s given twice".
// Stateless; any thread.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "ParticleSystem/LxParticleDomain.h"

class LxParticleBuilder;

class LX_API LxParticleDomainBuilder
{
public:
    // False (with the reasons logged through `reporter`) when the shape is not valid; `domain` is then untouched.
    static bool Build(const LxString& type, const LxArray<LxParticleDomain::Parameter>& parameters,
                      LxParticleBuilder& reporter, LxParticleDomain* domain);
};
