/* LxEffectParser grammar: the effect language, handed construct by construct to an LxEffectBuilder.
 *
 * Pure (reentrant) parser: the parser object and the scanner travel as parameters. Semantic values that own memory
 * have destructors, so error recovery and aborted parses free what they drop. Values handed to the builder in a
 * mid-rule action are copied by the builder, never adopted, so the destructors stay right.
 */

%require "3.2"
%define api.pure full
%define api.prefix {LxEffect_}
%define parse.error verbose
%locations
%expect 0
%parse-param {LxEffectParser* parser} {void* scanner}
%lex-param {void* scanner}

%code requires {
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "Common/LxVector4.h"

class LxAnnotationMap;
class LxAnnotationValue;
class LxEffectParser;
class LxVertexElement;
struct LxEffectTextToken;
struct LxStateValue;

// One "name = value" of an annotation list.
struct LxEffectAnnotationPair
{
    LxString name;
    LxAnnotationValue* value;
};
}

%code {
#include "EffectManager/LxEffectScanContext.h"

#include "EffectManager/LxAnnotationMap.h"
#include "EffectManager/LxAnnotationValue.h"
#include "EffectManager/LxEffectBuilder.h"
#include "EffectManager/LxEffectParser.h"
#include "EffectManager/LxStateValue.h"
#include "EffectManager/LxVertexElement.h"

#include <cmath>
#include <cstring>

int LxEffect_lex(LXEFFECT_STYPE* lval, LXEFFECT_LTYPE* lloc, void* scanner);
static void LxEffect_error(LXEFFECT_LTYPE* location, LxEffectParser* parser, void* scanner, const char* message);

// Messages of an action name the line of the construct (given by its location), not the lookahead's.
class LxEffectReportLineScope
{
public:
    LxEffectReportLineScope(LxEffectParser* parser, int line) : m_pParser(parser)
    {
        parser->SetReportLine(line > 0 ? static_cast<unsigned int>(line) : 0u);
    }
    ~LxEffectReportLineScope() { m_pParser->SetReportLine(0); }

private:
    LxEffectParser* m_pParser;
};
#define AT(loc) LxEffectReportLineScope lxLineScope(parser, (loc).first_line)

// Bison's stack-exhaustion text is reported under the name this parser has always used for it.
static const char* LxEffectGrammarText(const char* text)
{
    return std::strcmp(text, "memory exhausted") == 0 ? "parser stack overflow" : text;
}
#define YY_(Msgid) LxEffectGrammarText(Msgid)

#define BUILDER (parser->GetBuilder())

namespace
{
// Integer expressions wrap to 32 bits instead of overflowing.
int Wrap(long long v)
{
    const unsigned int bits = static_cast<unsigned int>(static_cast<unsigned long long>(v) & 0xFFFFFFFFull);
    int r;
    std::memcpy(&r, &bits, sizeof r);
    return r;
}

int IntOp(LxEffectParser* parser, int a, int b, char op)
{
    const long long x = a, y = b;
    switch (op)
    {
    case '+': return Wrap(x + y);
    case '-': return Wrap(x - y);
    case '*': return Wrap(x * y);
    default: break;
    }
    if (y == 0)
    {
        parser->ReportError("Division by zero in integer expression");
        return 0;
    }
    return Wrap(op == '/' ? x / y : x % y);
}

void AddPair(LxAnnotationMap* map, LxEffectAnnotationPair* pair)
{
    map->SetValue(pair->name, pair->value);
    delete pair;
}

void AddParameter(LxEffectParser* parser, const LxString* name, int type, int count, const LxArray<float>* values,
                  const LxAnnotationMap* annotations)
{
    if (count < 0) // the count was rejected; the declaration is dropped
        return;
    const LxEffectParameter::DataType t = LxEffectParameter::DataType(type);
    if (count == 0)
        BUILDER->AddEffectParameter(*name, t, values, annotations);
    else
        BUILDER->AddEffectParameterArray(*name, t, static_cast<unsigned int>(count), values, annotations);
}

void AddParameter(LxEffectParser* parser, const LxString* name, int type, int count, const LxArray<int>* values,
                  const LxAnnotationMap* annotations)
{
    if (count < 0)
        return;
    const LxEffectParameter::DataType t = LxEffectParameter::DataType(type);
    if (count == 0)
        BUILDER->AddEffectParameter(*name, t, values, annotations);
    else
        BUILDER->AddEffectParameterArray(*name, t, static_cast<unsigned int>(count), values, annotations);
}

void AddParameter(LxEffectParser* parser, const LxString* name, int type, int count, const LxArray<bool>* values,
                  const LxAnnotationMap* annotations)
{
    if (count < 0)
        return;
    const LxEffectParameter::DataType t = LxEffectParameter::DataType(type);
    if (count == 0)
        BUILDER->AddEffectParameter(*name, t, values, annotations);
    else
        BUILDER->AddEffectParameterArray(*name, t, static_cast<unsigned int>(count), values, annotations);
}

void AddShader(LxEffectParser* parser, LxShaderType type, LxEffectTextToken* code, const LxAnnotationMap* options)
{
    LxShaderCodeBlock block(LxString(), LX_SHADING_LANGUAGE_HLSL, code->text, parser->GetCurrentEffectFileName(),
                            code->line);
    BUILDER->AddShader(type, block, options);
}
} // namespace
}

%union {
    LxString* str;
    int ival;
    float fval;
    bool bval;
    LxEffectTextToken* block;
    LxAnnotationMap* map;
    LxEffectAnnotationPair* pair;
    LxAnnotationValue* aval;
    LxArray<float>* floats;
    LxArray<int>* ints;
    LxArray<bool>* bools;
    LxArray<LxString>* strs;
    LxArray<LxVertexElement*>* elements;
    LxVertexElement* element;
    LxVector4* vec;
    LxStateValue* state;
}

/* Token kinds in their fixed numbering order (from 258). */
%token T_ART_NOTES T_OPTIONS T_STREAM T_STREAM_MAP
%token T_STREAM_OUT_MAP0 T_STREAM_OUT_MAP1 T_STREAM_OUT_MAP2 T_STREAM_OUT_MAP3
%token T_START_HLSL T_END_HLSL T_START_GLSL T_END_GLSL
%token <bval> T_TECHNIQUE T_COMPUTE_TECHNIQUE
%token T_PASS T_PROPERTIES
%token T_VERTEX_SHADER T_END_VERTEX_SHADER T_GEOMETRY_SHADER T_END_GEOMETRY_SHADER
%token T_PIXEL_SHADER T_END_PIXEL_SHADER T_HULL_SHADER T_END_HULL_SHADER
%token T_DOMAIN_SHADER T_END_DOMAIN_SHADER T_COMPUTE_SHADER T_END_COMPUTE_SHADER
%token T_BINARY_SHADER_PAIR T_NULL T_SEMICOLON
%token <block> T_TEXT_BLOCK T_CODE_BLOCK
%token <str> T_ID
%token <fval> T_FLOAT
%token <str> T_STRING
%token <bval> T_BOOL
%token <ival> T_INTEGER
%token <ival> T_CONSTANT_TYPE_MATRIX T_CONSTANT_TYPE_FLOAT T_CONSTANT_TYPE_INT T_CONSTANT_TYPE_BOOL
%token <ival> T_CONSTANT_TYPE_VECTOR T_CONSTANT_TYPE_VECTOR_INT T_CONSTANT_TYPE_VECTOR_BOOL
%token <ival> T_TEXTURE_BUFFER T_TEXTURE_2D T_TEXTURE_3D T_TEXTURE_CUBE T_TEXTURE_2D_ARRAY T_TEXTURE_CUBE_ARRAY
%token <ival> T_RW_BUFFER T_RW_TEXTURE_2D T_RW_TEXTURE_3D
%token <ival> T_STRUCTURED_BUFFER T_RW_STRUCTURED_BUFFER T_APPEND_STRUCTURED_BUFFER
%token <ival> T_BYTE_ADDRESS_BUFFER T_RW_BYTE_ADDRESS_BUFFER T_APPEND_BYTE_ADDRESS_BUFFER
%token T_SAMPLER T_TEXTURE
%token <ival> T_STREAM_TYPE_FLOAT T_STREAM_TYPE_FLOAT2 T_STREAM_TYPE_FLOAT3 T_STREAM_TYPE_FLOAT4
%token <ival> T_STREAM_TYPE_UBYTE4 T_STREAM_TYPE_DEC3N
%token <ival> T_STREAM_TYPE_HALF T_STREAM_TYPE_HALF2 T_STREAM_TYPE_HALF3 T_STREAM_TYPE_HALF4 T_STREAM_TYPE_UDEC3
%token <ival> T_STREAM_TYPE_SHORT T_STREAM_TYPE_SHORT2 T_STREAM_TYPE_SHORT3 T_STREAM_TYPE_SHORT4
%token <ival> T_STREAM_TYPE_UBYTE4N T_STREAM_TYPE_USHORT2N T_STREAM_TYPE_USHORT4N
%token <ival> T_STREAM_TYPE_SHORT2N T_STREAM_TYPE_SHORT4N T_STREAM_TYPE_USHORT2 T_STREAM_TYPE_USHORT4
%token <ival> T_STREAM_TYPE_INT4 T_STREAM_TYPE_UINT4
%token <ival> T_STREAM_TYPE_BYTE2 T_STREAM_TYPE_UBYTE2 T_STREAM_TYPE_BYTE2N T_STREAM_TYPE_UBYTE2N
%token <ival> T_STREAM_TYPE_USHORT T_STREAM_TYPE_USHORTN T_STREAM_TYPE_SHORTN
%token <ival> T_STREAM_TYPE_UINT T_STREAM_TYPE_INT T_STREAM_TYPE_UINTN T_STREAM_TYPE_INTN
%token <ival> T_STREAM_TYPE_UINT2 T_STREAM_TYPE_INT2 T_STREAM_TYPE_UINT2N T_STREAM_TYPE_INT2N

%type <ival> float_type int_type bool_type texture_kind uav_kind stream_type stream_out_map opt_count
%type <ival> int_expr int_term int_factor
%type <fval> float_expr float_term float_factor number
%type <str> id_or_string
%type <map> annotations opt_annotations annotation_list annotation_pairs shader_code_options
%type <pair> annotation_pair
%type <aval> annotation_value
%type <vec> vector4
%type <state> state_value
%type <floats> opt_float_init float_list
%type <ints> opt_int_init int_list
%type <bools> opt_bool_init bool_list
%type <strs> opt_id_list id_list
%type <elements> stream_elements stream_body
%type <element> stream_element

%destructor { delete $$; } <str> <block> <map> <aval> <floats> <ints> <bools> <strs> <element> <vec> <state>
%destructor { if ($$) { delete $$->value; delete $$; } } <pair>
%destructor { if ($$) { for (LxVertexElement* e : *$$) delete e; delete $$; } } <elements>

%%

effect_file
    : file_section
    | effect_file file_section
    ;

file_section
    : art_notes
    | effect_options
    | constant_decl
    | texture_decl
    | sampler_decl
    | stream_decl
    | stream_map_decl
    | code_block
    | technique
    | T_SEMICOLON
    | error                     { BUILDER->AbandonOpenScopes(); }
    /* Misplaced constructs parse, so that the builder can say what is wrong with them. */
    | properties
    | pass
    | render_state
    | stage
    | binary_shader_pair
    | T_TEXTURE '=' T_ID        { AT(@1); BUILDER->AddSamplerTexture(*$3); delete $3; }
    ;

/* --- art notes, options, code blocks ---------------------------------------------------------------------- */

art_notes
    : T_ART_NOTES text_blocks
    ;

text_blocks
    : T_TEXT_BLOCK              { AT(@1); BUILDER->AddArtNotes($1->text); delete $1; }
    | text_blocks T_TEXT_BLOCK  { AT(@2); BUILDER->AddArtNotes($2->text); delete $2; }
    ;

effect_options
    : T_OPTIONS annotations     { AT(@1); BUILDER->SetEffectOptions($2); delete $2; }
    ;

code_block
    : T_START_HLSL T_ID { LxEffectScannerBeginCapture(scanner, "EndHLSL"); } T_CODE_BLOCK T_END_HLSL
        {
            AT(@2);
            BUILDER->AddCodeBlock(new LxShaderCodeBlock(*$2, LX_SHADING_LANGUAGE_HLSL, $4->text,
                                                        parser->GetCurrentEffectFileName(), $4->line));
            delete $2;
            delete $4;
        }
    | T_START_GLSL T_ID { LxEffectScannerBeginCapture(scanner, "EndGLSL"); } T_CODE_BLOCK T_END_GLSL
        {
            AT(@2);
            BUILDER->AddCodeBlock(new LxShaderCodeBlock(*$2, LX_SHADING_LANGUAGE_GLSL, $4->text,
                                                        parser->GetCurrentEffectFileName(), $4->line));
            delete $2;
            delete $4;
        }
    ;

/* --- parameters --------------------------------------------------------------------------------------------- */

constant_decl
    : float_type T_ID opt_count opt_float_init opt_annotations
        { AT(@2); AddParameter(parser, $2, $1, $3, $4, $5); delete $2; delete $4; delete $5; }
    | int_type T_ID opt_count opt_int_init opt_annotations
        { AT(@2); AddParameter(parser, $2, $1, $3, $4, $5); delete $2; delete $4; delete $5; }
    | bool_type T_ID opt_count opt_bool_init opt_annotations
        { AT(@2); AddParameter(parser, $2, $1, $3, $4, $5); delete $2; delete $4; delete $5; }
    ;

float_type: T_CONSTANT_TYPE_MATRIX | T_CONSTANT_TYPE_FLOAT | T_CONSTANT_TYPE_VECTOR ;
int_type: T_CONSTANT_TYPE_INT | T_CONSTANT_TYPE_VECTOR_INT ;
bool_type: T_CONSTANT_TYPE_BOOL | T_CONSTANT_TYPE_VECTOR_BOOL ;

opt_count
    : %empty                    { $$ = 0; }
    | '[' int_expr ']'
        {
            if ($2 <= 0)
            {
                AT(@2);
                parser->ReportError("Value must be positive.  Got: %d", $2);
                $$ = -1;
            }
            else
                $$ = $2;
        }
    ;

opt_float_init
    : %empty                    { $$ = nullptr; }
    | '(' ')'                   { $$ = new LxArray<float>(); }
    | '(' float_list ')'        { $$ = $2; }
    ;
float_list
    : number                    { $$ = new LxArray<float>(); $$->Add($1); }
    | float_list ',' number     { $$ = $1; $$->Add($3); }
    ;

opt_int_init
    : %empty                    { $$ = nullptr; }
    | '(' ')'                   { $$ = new LxArray<int>(); }
    | '(' int_list ')'          { $$ = $2; }
    ;
int_list
    : int_expr                  { $$ = new LxArray<int>(); $$->Add($1); }
    | int_list ',' int_expr     { $$ = $1; $$->Add($3); }
    ;

opt_bool_init
    : %empty                    { $$ = nullptr; }
    | '(' ')'                   { $$ = new LxArray<bool>(); }
    | '(' bool_list ')'         { $$ = $2; }
    ;
bool_list
    : T_BOOL                    { $$ = new LxArray<bool>(); $$->Add($1); }
    | bool_list ',' T_BOOL      { $$ = $1; $$->Add($3); }
    ;

/* --- expressions ---------------------------------------------------------------------------------------------- */

number
    : float_expr                { $$ = $1; }
    | int_expr                  { $$ = static_cast<float>($1); }
    ;

int_expr
    : int_term
    | int_expr '+' int_term     { AT(@2); $$ = IntOp(parser, $1, $3, '+'); }
    | int_expr '-' int_term     { AT(@2); $$ = IntOp(parser, $1, $3, '-'); }
    ;
int_term
    : int_factor
    | int_term '*' int_factor   { AT(@2); $$ = IntOp(parser, $1, $3, '*'); }
    | int_term '/' int_factor   { AT(@2); $$ = IntOp(parser, $1, $3, '/'); }
    | int_term '%' int_factor   { AT(@2); $$ = IntOp(parser, $1, $3, '%'); }
    ;
int_factor
    : T_INTEGER
    | '(' int_expr ')'          { $$ = $2; }
    ;

float_expr
    : float_term
    | float_expr '+' float_term { $$ = $1 + $3; }
    | float_expr '-' float_term { $$ = $1 - $3; }
    ;
float_term
    : float_factor
    | float_term '*' float_factor { $$ = $1 * $3; }
    | float_term '/' float_factor { $$ = $1 / $3; }
    | float_term '%' float_factor { $$ = std::fmod($1, $3); }
    ;
float_factor
    : T_FLOAT
    | '(' float_expr ')'        { $$ = $2; }
    ;

vector4
    : '(' number ',' number ',' number ',' number ')'   { $$ = new LxVector4($2, $4, $6, $8); }
    ;

id_or_string: T_ID | T_STRING ;

/* --- annotations ---------------------------------------------------------------------------------------------- */

opt_annotations
    : %empty                    { $$ = nullptr; }
    | annotations
    ;

annotations
    : '<' annotation_list '>'   { $$ = $2; }
    | '<' error '>'             { $$ = new LxAnnotationMap(); }
    ;

annotation_list
    : %empty                    { $$ = new LxAnnotationMap(); }
    | annotation_pairs
    ;

annotation_pairs
    : annotation_pair                       { $$ = new LxAnnotationMap(); AddPair($$, $1); }
    | annotation_pairs ',' annotation_pair  { $$ = $1; AddPair($$, $3); }
    ;

annotation_pair
    : T_ID '=' annotation_value { $$ = new LxEffectAnnotationPair{*$1, $3}; delete $1; }
    | T_ID                      { $$ = new LxEffectAnnotationPair{*$1, new LxAnnotationValue(true)}; delete $1; }
    ;

annotation_value
    : id_or_string              { $$ = new LxAnnotationValue(*$1); delete $1; }
    | number                    { $$ = new LxAnnotationValue($1); }
    | T_BOOL                    { $$ = new LxAnnotationValue($1); }
    | vector4                   { $$ = new LxAnnotationValue(*$1); delete $1; }
    | annotations               { $$ = new LxAnnotationValue($1); }
    ;

/* --- textures and samplers ------------------------------------------------------------------------------------ */

texture_decl
    : texture_kind T_ID annotations
        { AT(@2); BUILDER->AddTexture(*$2, LxTextureSlot::Type($1), $3); delete $2; delete $3; }
    | uav_kind T_ID annotations
        { AT(@2); BUILDER->AddUAV(*$2, LxUAVSlot::Type($1), $3); delete $2; delete $3; }
    ;

texture_kind
    : T_TEXTURE_BUFFER | T_TEXTURE_2D | T_TEXTURE_3D | T_TEXTURE_CUBE | T_TEXTURE_2D_ARRAY | T_TEXTURE_CUBE_ARRAY
    | T_STRUCTURED_BUFFER | T_BYTE_ADDRESS_BUFFER
    ;
uav_kind
    : T_RW_BUFFER | T_RW_TEXTURE_2D | T_RW_TEXTURE_3D | T_RW_STRUCTURED_BUFFER | T_APPEND_STRUCTURED_BUFFER
    | T_RW_BYTE_ADDRESS_BUFFER | T_APPEND_BYTE_ADDRESS_BUFFER
    ;

sampler_decl
    : T_SAMPLER T_ID opt_annotations { AT(@2); BUILDER->StartSampler(*$2, $3); } '{' sampler_settings '}'
        { AT(@7); BUILDER->EndSampler(); delete $2; delete $3; }
    ;

sampler_settings
    : sampler_setting
    | sampler_settings sampler_setting
    | sampler_settings ',' sampler_setting
    ;

sampler_setting
    : T_TEXTURE '=' T_ID        { AT(@1); BUILDER->AddSamplerTexture(*$3); delete $3; }
    | T_ID '=' state_value      { AT(@1); BUILDER->AddSamplerState(*$1, *$3); delete $1; delete $3; }
    | T_SEMICOLON
    ;

state_value
    : T_ID                      { $$ = new LxStateValue(*$1); delete $1; }
    | T_BOOL                    { $$ = new LxStateValue($1); }
    | int_expr                  { $$ = new LxStateValue($1); }
    | float_expr                { $$ = new LxStateValue($1); }
    | vector4                   { $$ = new LxStateValue(*$1); delete $1; }
    ;

/* --- vertex streams ------------------------------------------------------------------------------------------- */

stream_decl
    : T_STREAM T_ID opt_annotations '{' stream_body '}'
        { AT(@2); BUILDER->AddStream(*$2, *$5, $3); for (LxVertexElement* e : *$5) delete e; delete $5; delete $2; delete $3; }
    ;

stream_body
    : stream_elements
    | stream_elements ','
    ;

stream_elements
    : stream_element                        { $$ = new LxArray<LxVertexElement*>(); $$->Add($1); }
    | stream_elements ',' stream_element    { $$ = $1; $$->Add($3); }
    ;

stream_element
    : stream_type T_ID opt_annotations
        { $$ = new LxVertexElement(LxVertexElement::DataType($1), *$2, LxString(), $3); delete $2; delete $3; }
    | stream_type T_ID T_ID opt_annotations
        { $$ = new LxVertexElement(LxVertexElement::DataType($1), *$2, *$3, $4); delete $2; delete $3; delete $4; }
    ;

stream_type
    : T_STREAM_TYPE_FLOAT | T_STREAM_TYPE_FLOAT2 | T_STREAM_TYPE_FLOAT3 | T_STREAM_TYPE_FLOAT4
    | T_STREAM_TYPE_UBYTE4 | T_STREAM_TYPE_DEC3N
    | T_STREAM_TYPE_HALF | T_STREAM_TYPE_HALF2 | T_STREAM_TYPE_HALF3 | T_STREAM_TYPE_HALF4 | T_STREAM_TYPE_UDEC3
    | T_STREAM_TYPE_SHORT | T_STREAM_TYPE_SHORT2 | T_STREAM_TYPE_SHORT3 | T_STREAM_TYPE_SHORT4
    | T_STREAM_TYPE_UBYTE4N | T_STREAM_TYPE_USHORT2N | T_STREAM_TYPE_USHORT4N
    | T_STREAM_TYPE_SHORT2N | T_STREAM_TYPE_SHORT4N | T_STREAM_TYPE_USHORT2 | T_STREAM_TYPE_USHORT4
    | T_STREAM_TYPE_INT4 | T_STREAM_TYPE_UINT4
    | T_STREAM_TYPE_BYTE2 | T_STREAM_TYPE_UBYTE2 | T_STREAM_TYPE_BYTE2N | T_STREAM_TYPE_UBYTE2N
    | T_STREAM_TYPE_USHORT | T_STREAM_TYPE_USHORTN | T_STREAM_TYPE_SHORTN
    | T_STREAM_TYPE_UINT | T_STREAM_TYPE_INT | T_STREAM_TYPE_UINTN | T_STREAM_TYPE_INTN
    | T_STREAM_TYPE_UINT2 | T_STREAM_TYPE_INT2 | T_STREAM_TYPE_UINT2N | T_STREAM_TYPE_INT2N
    ;

stream_map_decl
    : T_STREAM_MAP T_ID opt_annotations '{' opt_id_list '}'
        { AT(@2); BUILDER->AddStreamMap(*$2, *$5, $3); delete $2; delete $3; delete $5; }
    ;

opt_id_list
    : %empty                    { $$ = new LxArray<LxString>(); }
    | id_list
    ;
id_list
    : T_ID                      { $$ = new LxArray<LxString>(); $$->Add(*$1); delete $1; }
    | id_list ',' T_ID          { $$ = $1; $$->Add(*$3); delete $3; }
    ;

/* --- techniques and passes ------------------------------------------------------------------------------------ */

technique
    : technique_head '{' opt_technique_sections '}' { AT(@4); BUILDER->EndTechnique(); }
    ;

technique_head
    : T_TECHNIQUE T_ID                  { AT(@2); BUILDER->StartTechnique(*$2, $1, false); delete $2; }
    | T_TECHNIQUE T_ID ':' T_ID         { AT(@2); BUILDER->StartInheritedTechnique(*$2, *$4, $1, false); delete $2; delete $4; }
    | T_COMPUTE_TECHNIQUE T_ID          { AT(@2); BUILDER->StartTechnique(*$2, $1, true); delete $2; }
    | T_COMPUTE_TECHNIQUE T_ID ':' T_ID { AT(@2); BUILDER->StartInheritedTechnique(*$2, *$4, $1, true); delete $2; delete $4; }
    ;

opt_technique_sections
    : %empty
    | technique_sections
    ;

technique_sections
    : technique_section
    | technique_sections technique_section
    ;

technique_section
    : properties
    | pass
    | T_SEMICOLON
    | error
    /* Misplaced constructs, reported by the builder. */
    | technique
    | sampler_decl
    | render_state
    | stage
    | binary_shader_pair
    ;

properties
    : T_PROPERTIES '{' property_list '}'
    ;

property_list
    : id_or_string                      { AT(@1); BUILDER->AddTechniqueProperty(*$1); delete $1; }
    | property_list id_or_string        { AT(@2); BUILDER->AddTechniqueProperty(*$2); delete $2; }
    | property_list ',' id_or_string    { AT(@3); BUILDER->AddTechniqueProperty(*$3); delete $3; }
    ;

pass
    : T_PASS T_ID '{' { AT(@2); BUILDER->StartPass(*$2); } opt_pass_sections '}'  { AT(@2); BUILDER->EndPass(); delete $2; }
    ;

opt_pass_sections
    : %empty
    | pass_sections
    ;
pass_sections
    : pass_section
    | pass_sections pass_section
    ;

pass_section
    : render_state
    | stage
    | binary_shader_pair
    | T_SEMICOLON
    | error
    /* Misplaced constructs, reported by the builder. */
    | pass
    | sampler_decl
    ;

render_state
    : T_STREAM_MAP '=' T_ID             { AT(@1); BUILDER->SetStreamMap(*$3); delete $3; }
    | stream_out_map '=' T_ID           { AT(@1); BUILDER->SetStreamOutMap(static_cast<unsigned int>($1), *$3); delete $3; }
    | stream_out_map '=' T_NULL         { AT(@1); BUILDER->ClearStreamOutMap(static_cast<unsigned int>($1)); }
    | T_ID '=' state_value              { AT(@1); BUILDER->AddRenderState(*$1, *$3); delete $1; delete $3; }
    ;

stream_out_map
    : T_STREAM_OUT_MAP0                 { $$ = 0; }
    | T_STREAM_OUT_MAP1                 { $$ = 1; }
    | T_STREAM_OUT_MAP2                 { $$ = 2; }
    | T_STREAM_OUT_MAP3                 { $$ = 3; }
    ;

shader_code_options
    : '(' annotation_list ')'           { $$ = $2; }
    | '(' error ')'                     { $$ = new LxAnnotationMap(); }
    ;

/* The mid-rule action after the options switches the scanner to capture the body; it runs before the next token
   is read, since the state it is reduced in has no other action. */
stage
    : T_VERTEX_SHADER shader_code_options { LxEffectScannerBeginCapture(scanner, "EndVertexShader"); }
      T_CODE_BLOCK T_END_VERTEX_SHADER
        { AT(@1); AddShader(parser, LX_VERTEX_SHADER, $4, $2); delete $2; delete $4; }
    | T_VERTEX_SHADER '(' T_NULL ')'    { AT(@1); BUILDER->DisableShader(LX_VERTEX_SHADER); }
    | T_GEOMETRY_SHADER shader_code_options { LxEffectScannerBeginCapture(scanner, "EndGeometryShader"); }
      T_CODE_BLOCK T_END_GEOMETRY_SHADER
        { AT(@1); AddShader(parser, LX_GEOMETRY_SHADER, $4, $2); delete $2; delete $4; }
    | T_GEOMETRY_SHADER '(' T_NULL ')'  { AT(@1); BUILDER->DisableShader(LX_GEOMETRY_SHADER); }
    | T_HULL_SHADER shader_code_options { LxEffectScannerBeginCapture(scanner, "EndHullShader"); }
      T_CODE_BLOCK T_END_HULL_SHADER
        { AT(@1); AddShader(parser, LX_HULL_SHADER, $4, $2); delete $2; delete $4; }
    | T_HULL_SHADER '(' T_NULL ')'      { AT(@1); BUILDER->DisableShader(LX_HULL_SHADER); }
    | T_DOMAIN_SHADER shader_code_options { LxEffectScannerBeginCapture(scanner, "EndDomainShader"); }
      T_CODE_BLOCK T_END_DOMAIN_SHADER
        { AT(@1); AddShader(parser, LX_DOMAIN_SHADER, $4, $2); delete $2; delete $4; }
    | T_DOMAIN_SHADER '(' T_NULL ')'    { AT(@1); BUILDER->DisableShader(LX_DOMAIN_SHADER); }
    | T_PIXEL_SHADER shader_code_options { LxEffectScannerBeginCapture(scanner, "EndPixelShader"); }
      T_CODE_BLOCK T_END_PIXEL_SHADER
        { AT(@1); AddShader(parser, LX_PIXEL_SHADER, $4, $2); delete $2; delete $4; }
    | T_PIXEL_SHADER '(' T_NULL ')'     { AT(@1); BUILDER->DisableShader(LX_PIXEL_SHADER); }
    | T_COMPUTE_SHADER shader_code_options { LxEffectScannerBeginCapture(scanner, "EndComputeShader"); }
      T_CODE_BLOCK T_END_COMPUTE_SHADER
        { AT(@1); AddShader(parser, LX_COMPUTE_SHADER, $4, $2); delete $2; delete $4; }
    | T_COMPUTE_SHADER '(' T_NULL ')'   { AT(@1); BUILDER->DisableShader(LX_COMPUTE_SHADER); }
    ;

binary_shader_pair
    : T_BINARY_SHADER_PAIR '(' id_or_string ')'     { AT(@1); BUILDER->AddBinaryShaderPair(*$3); delete $3; }
    | T_BINARY_SHADER_PAIR '(' T_NULL ')'           { AT(@1); BUILDER->AddBinaryShaderPair(LxString()); }
    ;

%%

static void LxEffect_error(LXEFFECT_LTYPE* location, LxEffectParser* parser, void* scanner, const char* message)
{
    (void)scanner;
    AT(*location);
    parser->ReportError("%s", message);
}

int LxEffectGrammarParse(LxEffectParser* parser, void* scanner)
{
    return LxEffect_parse(parser, scanner);
}
