/* LxParticleParser grammar: particle files, handed construct by construct to an LxParticleBuilder.
 *
 * Pure (reentrant) parser: the parser object and the scanner travel as parameters. Semantic values that own memory
 * have destructors, so error recovery and aborted parses free what they drop: a value a mid-rule action uses stays
 * on the stack until the rule's last action frees it. The builder copies what it is given. No rule nests (lists are left-recursive), so the parser stack stays shallow whatever the input.
 */

%require "3.2"
%define api.pure full
%define api.prefix {LxParticle_}
%define parse.error verbose
%locations
%expect 0
%parse-param {LxParticleParser* parser} {void* scanner}
%lex-param {void* scanner}

%code requires {
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "ParticleSystem/LxParticleDomain.h"

class LxParticleKeyFrameChannel;
class LxParticleParameter;
class LxParticleParser;
class LxParticleTransform;
class LxParticleValue;
}

%code {
#include "ParticleSystem/LxParticleScanContext.h"

#include "ParticleSystem/LxParticleBuilder.h"
#include "ParticleSystem/LxParticleGroupDesc.h"
#include "ParticleSystem/LxParticleKeyFrameChannel.h"
#include "ParticleSystem/LxParticleParameter.h"
#include "ParticleSystem/LxParticleParser.h"
#include "ParticleSystem/LxParticleTransform.h"
#include "ParticleSystem/LxParticleValue.h"

#include <cstring>
#include <initializer_list>

int LxParticle_lex(LXPARTICLE_STYPE* lval, LXPARTICLE_LTYPE* lloc, void* scanner);
static void LxParticle_error(LXPARTICLE_LTYPE* location, LxParticleParser* parser, void* scanner, const char* message);

#define BUILDER (parser->GetBuilder())
#define ELEMENT (parser->GetElementBuilder())
// Builder calls and messages of an action name the line of the construct, not the lookahead's.
class LxParticleReportLineScope
{
public:
    LxParticleReportLineScope(LxParticleParser* parser, int line) : m_pParser(parser)
    {
        parser->SetReportLine(line > 0 ? static_cast<unsigned int>(line) : 0u);
    }
    ~LxParticleReportLineScope() { m_pParser->SetReportLine(0); }

private:
    LxParticleParser* m_pParser;
};
#define AT(loc) LxParticleReportLineScope lxLineScope(parser, (loc).first_line)

// Bison's stack-exhaustion text is reported under a plainer name.
static const char* LxParticleGrammarText(const char* text)
{
    return std::strcmp(text, "memory exhausted") == 0 ? "parser stack overflow" : text;
}
#define YY_(Msgid) LxParticleGrammarText(Msgid)

namespace
{
LxArray<float>* Numbers(std::initializer_list<float> values)
{
    LxArray<float>* numbers = new LxArray<float>();
    for (float v : values)
        numbers->Add(v);
    return numbers;
}

LxArray<float>* Join(LxArray<float>* a, LxArray<float>* b)
{
    for (float v : *b)
        a->Add(v);
    delete b;
    return a;
}

LxParticleParameter* MakeParameter(LxParticleParser* parser, LxParticleParameterKind kind, LxArray<float>* numbers)
{
    LxParticleParameter* parameter = BUILDER->CreateParameter(kind, *numbers);
    delete numbers;
    return parameter;
}

LxParticleParameter* MakeKeyFramed(LxParticleParser* parser, LxParticleParameterKind kind,
                                   LxArray<LxParticleKeyFrameChannel*>* channels)
{
    LxParticleParameter* parameter = BUILDER->CreateParameter(kind, LxArray<float>());
    bool ok = parameter != nullptr;
    for (LxParticleKeyFrameChannel* channel : *channels)
    {
        if (ok)
            ok = BUILDER->AddKeyFrameChannel(parameter, channel);
        delete channel;
    }
    delete channels;
    if (ok && !BUILDER->FinishParameter(*parameter))
        ok = false;
    if (!ok)
    {
        delete parameter;
        return nullptr;
    }
    return parameter;
}

LxParticleTransform* MakeTransform(LxParticleParser* parser, const char* type, LxParticleTransform* items)
{
    LxParticleTransform* transform = BUILDER->CreateTransform(type);
    if (transform)
        for (unsigned int i = 0; i < items->GetItemCount(); ++i)
        {
            const LxParticleTransform::Item& item = items->GetItem(i);
            if (item.kind == LxParticleTransform::ANIMATION)
                transform->AddAnimationItem(item.curve, item.curve2, item.timeOffset);
            else
                transform->AddVectorItem(item.kind, item.value);
        }
    delete items;
    return transform;
}

LxParticleTransform* VectorItem(LxParticleTransform::ItemKind kind, float x, float y, float z)
{
    LxParticleTransform* transform = new LxParticleTransform();
    transform->AddVectorItem(kind, LxVector3(x, y, z));
    return transform;
}

LxParticleDomain::Parameter* ShapeParameter(LxString* name, LxParticleDomain::ValueKind kind, float x, float y, float z,
                                            float w)
{
    LxParticleDomain::Parameter* p = new LxParticleDomain::Parameter{*name, kind, LxVector4(x, y, z, w)};
    delete name;
    return p;
}
} // namespace
}

%union {
    LxString* str;
    int ival;
    float fval;
    bool bval;
    const char* word;
    LxArray<float>* numbers;
    LxParticleValue* value;
    LxParticleParameter* parameter;
    LxParticleKeyFrameChannel* channel;
    LxArray<LxParticleKeyFrameChannel*>* channels;
    LxParticleTransform* transform;
    LxParticleDomain::Parameter* shapeParam;
    LxArray<LxParticleDomain::Parameter>* shapeParams;
}

%token T_HEADER "Lumex Particle Editor Project"
%token T_TEXTURE_PATH "TexturePath" T_OBJECT_PATH "ObjectPath" T_CLEAR_COLOR "ClearColor"
%token T_NEAR_CLIP_PLANE "NearClipPlane" T_FAR_CLIP_PLANE "FarClipPlane" T_GRID_UNIT_SIZE "GridUnitSize"
%token T_GRID_SIZE "GridSize" T_CAMERA_POS "CameraPos" T_COORDINATE_FRAME_SIZE "CoordinateFrameSize"
%token T_PARTICLE_SYSTEM "ParticleSystem" T_END_PARTICLE_SYSTEM "EndParticleSystem"
%token T_PARTICLE_OBJECT "ParticleObject" T_TEXTURE_TILE "TextureTile" T_EFFECT "Effect" T_TEXTURE "Texture"
%token T_EFFECT_PARAM "EffectParam" T_ACTION "Action" T_END_ACTION "EndAction" T_EMITTER "Emitter"
%token T_END_EMITTER "EndEmitter" T_PARAM "Param" T_END_PARAM "EndParam" T_FIXED "Fixed" T_RANDOM "Random"
%token T_NON_UNIFORM_RANDOM "NonUniformRandom" T_KEYFRAME "KeyFrame"
%token T_KEYFRAMED_NON_UNIFORM_RANDOM "KeyFramedNonUniformRandom"
%token T_KEYFRAME_CHANNEL "KeyFrameChannel" T_END_KEYFRAME_CHANNEL "EndKeyFrameChannel"
%token T_KEYFRAME_TEX_SIZE "KeyFrameTexSize" T_TRANSLATION "Translation" T_ROTATION "Rotation" T_SCALE "Scale"
%token T_SHEAR "Shear" T_ANIMATION "Animation" T_TRANSFORM "Transform" T_END_TRANSFORM "EndTransform"
%token T_SHAPE "Shape" T_END_SHAPE "EndShape" T_WORLD "World" T_WORLD_ROT_CAM_POS "WorldRotCamPos"
%token T_CAMERA "Camera"
%token <bval> T_BOOL "boolean"
%token <str> T_ID "identifier"
%token <ival> T_INT "integer"
%token <fval> T_FLOAT "float"
%token <str> T_STRING "string"

%type <fval> number
%type <str> name relaxed_id
%type <word> transform_type
%type <numbers> fixed_numbers random_numbers non_uniform_numbers pair triple
%type <value> scalar
%type <parameter> parameter
%type <channel> keyframe_channel keyframes
%type <channels> keyframe_channels
%type <transform> transform transform_items transform_item
%type <shapeParam> shape_param
%type <shapeParams> shape_params

%destructor { delete $$; } <str> <numbers> <value> <parameter> <channel> <transform> <shapeParam> <shapeParams>
%destructor { if ($$) { for (LxParticleKeyFrameChannel* c : *$$) delete c; delete $$; } } <channels>

%%

particle_file
    : header particle_file_items
    ;

header
    : T_HEADER T_FLOAT                  { AT(@2); BUILDER->SetVersion($2); }
    ;

particle_file_items
    : %empty
    | particle_file_items particle_file_item
    ;

particle_file_item
    : T_TEXTURE_PATH T_STRING           { BUILDER->SetTexturePath(*$2); delete $2; }
    | T_OBJECT_PATH T_STRING            { BUILDER->SetObjectPath(*$2); delete $2; }
    | T_CLEAR_COLOR number number number number { BUILDER->SetClearColor($2, $3, $4, $5); }
    | T_NEAR_CLIP_PLANE number          { BUILDER->SetNearClipPlane($2); }
    | T_FAR_CLIP_PLANE number           { BUILDER->SetFarClipPlane($2); }
    | T_GRID_UNIT_SIZE number           { BUILDER->SetGridUnitSize($2); }
    | T_GRID_SIZE number                { BUILDER->SetGridSize($2); }
    | T_CAMERA_POS number number number number number
        {
            const float values[5] = {$2, $3, $4, $5, $6};
            BUILDER->SetCameraPos(values);
        }
    | T_COORDINATE_FRAME_SIZE number    { BUILDER->SetCoordinateFrameSize($2); }
    | particle_system
    | error                             { BUILDER->AbandonOpenScopes(); parser->SetElementBuilder(nullptr); }
    ;

/* --- systems -------------------------------------------------------------------------------------------------- */

particle_system
    : T_PARTICLE_SYSTEM T_ID name
        {
            AT(@3);
            BUILDER->BeginSystem(*$3);
            BUILDER->SetSystemType(*$2);
        }
      particle_sections T_END_PARTICLE_SYSTEM
        { AT(@6); BUILDER->EndSystem(); delete $2; delete $3; }
    ;

particle_sections
    : particle_section
    | particle_sections particle_section
    ;

particle_section
    : T_EFFECT T_STRING                 { AT(@2); BUILDER->SetEffect(*$2); delete $2; }
    | T_KEYFRAME_TEX_SIZE T_INT T_INT   { AT(@1); BUILDER->SetKeyFrameTexSize($2, $3); }
    | texture_def
    | effect_param
    | action
    | emitter
    | transform                         { if ($1) { AT(@1); BUILDER->SetSystemTransform(*$1); } delete $1; }
    | T_PARTICLE_OBJECT T_STRING T_STRING { AT(@1); BUILDER->SetParticleObject(*$2, *$3); delete $2; delete $3; }
    | T_TEXTURE_TILE T_INT T_INT        { AT(@1); BUILDER->SetTextureTile($2, $3); }
    | T_ID scalar                       { AT(@1); BUILDER->SetSystemParameter(*$1, *$2); delete $1; delete $2; }
    | error                             { BUILDER->AbandonOpenElement(); parser->SetElementBuilder(nullptr); }
    ;

texture_def
    : T_TEXTURE T_ID                    { AT(@2); BUILDER->BeginTextureSet(*$2); }
      '{' texture_slots '}'             { AT(@6); BUILDER->EndTextureSet(); delete $2; }
    ;

texture_slots
    : texture_slot_and_file
    | texture_slots texture_slot_and_file
    ;

texture_slot_and_file
    : T_ID T_STRING                     { AT(@1); BUILDER->AddTexture(*$1, *$2); delete $1; delete $2; }
    ;

effect_param
    : T_EFFECT_PARAM relaxed_id parameter
        { if ($3) { AT(@2); BUILDER->AddEffectParameter(*$2, *$3); } delete $2; delete $3; }
    ;

/* --- emitters and actions ------------------------------------------------------------------------------------- */

emitter
    : T_EMITTER relaxed_id name
        {
            AT(@3);
            BUILDER->GetEmitterBuilder().Begin(*$2, *$3);
            parser->SetElementBuilder(&BUILDER->GetEmitterBuilder());
        }
      element_members T_END_EMITTER
        { AT(@6); BUILDER->GetEmitterBuilder().End(); parser->SetElementBuilder(nullptr); delete $2; delete $3; }
    ;

action
    : T_ACTION T_ID name
        {
            AT(@3);
            BUILDER->GetActionBuilder().Begin(*$2, *$3);
            parser->SetElementBuilder(&BUILDER->GetActionBuilder());
        }
      element_members T_END_ACTION
        { AT(@6); BUILDER->GetActionBuilder().End(); parser->SetElementBuilder(nullptr); delete $2; delete $3; }
    ;

element_members
    : element_member
    | element_members element_member
    ;

element_member
    : transform                         { if ($1 && ELEMENT) { AT(@1); ELEMENT->SetTransform(*$1); } delete $1; }
    | shape
    | relaxed_id parameter
        { if ($2 && ELEMENT) { AT(@1); ELEMENT->AddParameter(*$1, *$2); } delete $1; delete $2; }
    | relaxed_id scalar
        { if (ELEMENT) { AT(@1); ELEMENT->AddValue(*$1, *$2); } delete $1; delete $2; }
    ;

/* --- parameters ----------------------------------------------------------------------------------------------- */

parameter
    : T_PARAM T_FIXED fixed_numbers     { AT(@1); $$ = MakeParameter(parser, LX_PARTICLE_PARAM_FIXED, $3); }
    | T_PARAM T_RANDOM random_numbers   { AT(@1); $$ = MakeParameter(parser, LX_PARTICLE_PARAM_RANDOM, $3); }
    | T_PARAM T_NON_UNIFORM_RANDOM non_uniform_numbers
        { AT(@1); $$ = MakeParameter(parser, LX_PARTICLE_PARAM_NON_UNIFORM_RANDOM, $3); }
    | T_PARAM T_KEYFRAMED_NON_UNIFORM_RANDOM keyframe_channels T_END_PARAM
        { AT(@1); $$ = MakeKeyFramed(parser, LX_PARTICLE_PARAM_KEYFRAMED_NON_UNIFORM, $3); }
    | T_PARAM T_KEYFRAME keyframe_channels T_END_PARAM
        { AT(@1); $$ = MakeKeyFramed(parser, LX_PARTICLE_PARAM_KEYFRAME, $3); }
    ;

fixed_numbers
    : number                            { $$ = Numbers({$1}); }
    | number number                     { $$ = Numbers({$1, $2}); }
    | number number number              { $$ = Numbers({$1, $2, $3}); }
    | number number number number       { $$ = Numbers({$1, $2, $3, $4}); }
    ;

random_numbers
    : pair
    | pair pair                         { $$ = Join($1, $2); }
    | pair pair pair                    { $$ = Join(Join($1, $2), $3); }
    | pair pair pair pair               { $$ = Join(Join(Join($1, $2), $3), $4); }
    ;

non_uniform_numbers
    : triple
    | triple triple                     { $$ = Join($1, $2); }
    | triple triple triple              { $$ = Join(Join($1, $2), $3); }
    | triple triple triple triple       { $$ = Join(Join(Join($1, $2), $3), $4); }
    ;

pair
    : number number                     { $$ = Numbers({$1, $2}); }
    ;

triple
    : number number number              { $$ = Numbers({$1, $2, $3}); }
    ;

keyframe_channels
    : keyframe_channel                  { $$ = new LxArray<LxParticleKeyFrameChannel*>(); $$->Add($1); }
    | keyframe_channels keyframe_channel { $$ = $1; $$->Add($2); }
    ;

keyframe_channel
    : T_KEYFRAME_CHANNEL keyframes T_END_KEYFRAME_CHANNEL { $$ = $2; }
    ;

keyframes
    : number number                     { $$ = new LxParticleKeyFrameChannel(); $$->AddKey($1, $2); }
    | keyframes number number           { $$ = $1; $$->AddKey($2, $3); }
    ;

/* --- transforms and shapes ------------------------------------------------------------------------------------ */

transform
    : T_TRANSFORM transform_type transform_items T_END_TRANSFORM
        { AT(@2); $$ = MakeTransform(parser, $2, $3); }
    ;

transform_type
    : T_WORLD                           { $$ = "World"; }
    | T_CAMERA                          { $$ = "Camera"; }
    | T_WORLD_ROT_CAM_POS               { $$ = "WorldRotCamPos"; }
    | T_ANIMATION                       { $$ = "Animation"; }
    ;

transform_items
    : transform_item
    | transform_items transform_item
        {
            $$ = $1;
            const LxParticleTransform::Item& item = $2->GetItem(0);
            if (item.kind == LxParticleTransform::ANIMATION)
                $$->AddAnimationItem(item.curve, item.curve2, item.timeOffset);
            else
                $$->AddVectorItem(item.kind, item.value);
            delete $2;
        }
    ;

transform_item
    : T_TRANSLATION number number number { $$ = VectorItem(LxParticleTransform::TRANSLATION, $2, $3, $4); }
    | T_ROTATION number number number   { $$ = VectorItem(LxParticleTransform::ROTATION, $2, $3, $4); }
    | T_SCALE number number number      { $$ = VectorItem(LxParticleTransform::SCALE, $2, $3, $4); }
    | T_SHEAR number number number      { $$ = VectorItem(LxParticleTransform::SHEAR, $2, $3, $4); }
    | T_ANIMATION T_STRING T_STRING number
        { $$ = new LxParticleTransform(); $$->AddAnimationItem(*$2, *$3, $4); delete $2; delete $3; }
    | T_ANIMATION T_STRING number
        { $$ = new LxParticleTransform(); $$->AddAnimationItem(*$2, LxString(), $3); delete $2; }
    ;

shape
    : T_SHAPE T_ID shape_params T_END_SHAPE
        { if (ELEMENT) { AT(@1); ELEMENT->SetShape(*$2, *$3); } delete $2; delete $3; }
    ;

shape_params
    : shape_param                       { $$ = new LxArray<LxParticleDomain::Parameter>(); $$->Add(*$1); delete $1; }
    | shape_params shape_param          { $$ = $1; $$->Add(*$2); delete $2; }
    ;

shape_param
    : T_ID number number number         { $$ = ShapeParameter($1, LxParticleDomain::VECTOR3, $2, $3, $4, 0.0f); }
    | T_ID number number number number  { $$ = ShapeParameter($1, LxParticleDomain::VECTOR4, $2, $3, $4, $5); }
    | T_ID T_BOOL                       { $$ = ShapeParameter($1, LxParticleDomain::BOOL, $2 ? 1.0f : 0.0f, 0, 0, 0); }
    | T_ID number                       { $$ = ShapeParameter($1, LxParticleDomain::FLOAT, $2, 0.0f, 0.0f, 0.0f); }
    ;

/* --- small pieces --------------------------------------------------------------------------------------------- */

scalar
    : T_BOOL                            { $$ = new LxParticleValue(LxParticleValue::FromBool($1)); }
    | T_INT                             { $$ = new LxParticleValue(LxParticleValue::FromInt($1)); }
    | T_FLOAT                           { $$ = new LxParticleValue(LxParticleValue::FromFloat($1)); }
    ;

number
    : T_FLOAT
    | T_INT                             { $$ = static_cast<float>($1); }
    ;

name
    : T_ID
    | T_STRING
    ;

relaxed_id
    : T_ID
    | T_SHAPE                           { $$ = new LxString("Shape"); }
    | T_ROTATION                        { $$ = new LxString("Rotation"); }
    ;

%%

static void LxParticle_error(LXPARTICLE_LTYPE* location, LxParticleParser* parser, void* scanner, const char* message)
{
    (void)scanner;
    AT(*location);
    parser->ReportError("%s", message);
}

int LxParticleGrammarParse(LxParticleParser* parser, void* scanner)
{
    return LxParticle_parse(parser, scanner);
}
