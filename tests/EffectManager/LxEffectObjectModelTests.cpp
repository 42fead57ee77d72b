// Object model tests: parameters, annotations, vertex layouts, view parameters and the drawing sequence.
#include "EffectManager/LxEffectTestUtil.h"

#include "EffectManager/LxScriptVariableSource.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace
{
// A parameter's storage as values of type T.
template <class T>
std::vector<T> Values(const LxEffectParameter& p)
{
    const T* data = static_cast<const T*>(p.GetDataPtr());
    return std::vector<T>(data, data + p.GetParameterSize() / sizeof(T));
}
} // namespace

TEST(LxEffectParameter, SizesNamesAndDefaults)
{
    using P = LxEffectParameter;
    for (unsigned int t = 0; t < P::NUM_DATA_TYPES; ++t)
    {
        P::DataType back;
        ASSERT_TRUE(P::DataTypeFromString(P::DataTypeToString(P::DataType(t)), &back));
        EXPECT_EQ(t, static_cast<unsigned int>(back));
    }
    P::DataType unused;
    EXPECT_FALSE(P::DataTypeFromString("float", &unused));
    EXPECT_EQ(4u, P::GetDataTypeSize(P::TYPE_BOOL)); // bools are stored as 32-bit ints
    EXPECT_EQ(128u, P("bones", P::TYPE_MATRIX, 2).GetParameterSize());
    EXPECT_EQ(nullptr, P("f", 1.0f).GetDefaultValueMatrix());

    // SetToDefaultValue writes the default into every element.
    P palette("palette", LxVector4(1, 2, 3, 4), 3);
    const std::vector<float> zeros(12, 0.0f);
    palette.SetRawValue(zeros.data(), 48);
    EXPECT_EQ(zeros, Values<float>(palette));
    palette.SetToDefaultValue();
    EXPECT_EQ((std::vector<float>{1, 2, 3, 4, 1, 2, 3, 4, 1, 2, 3, 4}), Values<float>(palette));

    EXPECT_EQ(std::vector<int>{1}, Values<int>(P("flag", true)));
}

TEST(LxEffectParameter, TypedSettersCheckTypeAndIndex)
{
    LxTest::LogCapture capture;
    LxEffectParameter counts("counts", 5, 2);
    counts.SetInt(9, 1);
    counts.SetInt(10, 2); // out of range: ignored
    counts.SetFloat(1.0f);
    EXPECT_TRUE(capture.Contains("LxEffectParameter::SetFloat: Effect parameter \"counts\" has type Int, not Float"));
    EXPECT_EQ((std::vector<int>{5, 9}), Values<int>(counts));

    LxEffectParameter m("m", LxEffectParameter::TYPE_MATRIX);
    std::vector<float> identity(16, 0.0f);
    identity[0] = identity[5] = identity[10] = identity[15] = 1.0f;
    m.SetFloatMatrix(identity.data());
    EXPECT_EQ(identity, Values<float>(m));
    const int iv[4] = {1, -2, 3, -4};
    EXPECT_EQ(LxVector4(1, -2, 3, -4),
              LxEffectParameter("vi", LxEffectParameter::TYPE_VECTOR_INT, iv, 1).GetDefaultValueVector());
    const bool bv[4] = {true, false, false, true};
    LxEffectParameter vb("vb", LxEffectParameter::TYPE_VECTOR_BOOL);
    vb.SetBoolVector(bv);
    EXPECT_EQ((std::vector<int>{1, 0, 0, 1}), Values<int>(vb));
}

namespace
{
// Annotations holding a colorConversion map with the given mask and exponent (either may be left out).
LxAnnotationMap ColorConversion(const char* mask, float exponent = -1.0f)
{
    LxAnnotationMap cc, annotations;
    if (mask)
        cc.SetValue("mask", new LxAnnotationValue(mask));
    if (exponent >= 0.0f)
        cc.SetValue("exponent", new LxAnnotationValue(exponent));
    annotations.SetValue("colorConversion", new LxAnnotationValue(new LxAnnotationMap(cc)));
    return annotations;
}
} // namespace

TEST(LxEffectParameter, ColorConversionAppliesToMaskedComponents)
{
    LxTest::LogCapture capture;
    LxEffectParameter color("color", LxEffectParameter::TYPE_VECTOR);
    color.SetAnnotations(ColorConversion("RGB", 2.2f));
    ASSERT_TRUE(color.HasColorConversion());
    const float half[4] = {0.5f, 0.5f, 0.5f, 0.5f};
    color.SetFloatVector(half);
    const float* v = static_cast<const float*>(color.GetDataPtr());
    EXPECT_FLOAT_EQ(std::pow(0.5f, 2.2f), v[0]);
    EXPECT_FLOAT_EQ(std::pow(0.5f, 2.2f), v[2]);
    EXPECT_FLOAT_EQ(0.5f, v[3]);
    color.SetRawValue(half, 16);
    EXPECT_FLOAT_EQ(std::pow(0.5f, 2.2f), v[1]);

    // An alpha-only mask, a bad mask, a missing exponent and a non-map value.
    color.SetAnnotations(ColorConversion("A", 2.0f));
    color.SetFloatVector(half);
    EXPECT_FLOAT_EQ(0.5f, v[0]);
    EXPECT_FLOAT_EQ(0.25f, v[3]);

    color.SetAnnotations(ColorConversion("RQ"));
    EXPECT_TRUE(capture.Contains("Effect parameter's color conversion mask is invalid (RQ).  Defaulting to RGB."));
    EXPECT_TRUE(capture.Contains("Effect parameter's color conversion exponent is either missing or invalid (out of "
                                 "range?).  Defaulting to 1.0."));
    EXPECT_EQ(0x7u, color.GetColorConversionMask());

    LxAnnotationMap notMap;
    notMap.SetValue("colorConversion", new LxAnnotationValue(1.0f));
    color.SetAnnotations(notMap);
    EXPECT_TRUE(capture.Contains("colorConversion annotation must specify an annotation map!"));
    LxEffectParameter i("i", 1);
    i.SetAnnotations(ColorConversion("RGB", 2.2f));
    EXPECT_TRUE(capture.Contains("Attempting to color convert a non Float/Vector parameter type!"));
}

namespace
{
class DoublingHandler : public LxUpdateHandler
{
public:
    void Update(LxEffectParameter& parameter, void* data, unsigned int size) override
    {
        ++calls;
        EXPECT_EQ(parameter.GetParameterSize(), size);
        static_cast<float*>(data)[0] = 0.25f;
    }
    int calls = 0;
};
} // namespace

TEST(LxEffectParameter, UpdateHandlerRunsWhenAppUpdatesAreOn)
{
    LxEffectParameter f("f", 1.0f);
    DoublingHandler* handler = new DoublingHandler();
    f.SetUpdateHandler(LxCountedPtr<LxUpdateHandler>(handler));
    f.ExecuteUpdateHandler();
    EXPECT_EQ(1, handler->calls);
    EXPECT_EQ(0.25f, *static_cast<const float*>(f.GetDataPtr()));
    LxEffectParameter::SetAppUpdatesEnabled(false);
    f.ExecuteUpdateHandler();
    LxEffectParameter::SetAppUpdatesEnabled(true);
    EXPECT_EQ(1, handler->calls);

    // Moving the storage keeps the value.
    float shadow[1] = {0.0f};
    f.SetStorage(shadow);
    EXPECT_EQ(0.25f, shadow[0]);
    f.SetFloat(3.0f);
    EXPECT_EQ(3.0f, shadow[0]);
    f.SetStorage(nullptr);
    EXPECT_EQ(3.0f, *static_cast<const float*>(f.GetDataPtr()));
}

TEST(LxAnnotationMap, DottedPathsAndTypeErrors)
{
    LxTest::LogCapture capture;
    LxAnnotationMap inner;
    inner.SetValue("MipLevels", new LxAnnotationValue(3.0f));
    LxAnnotationMap map;
    map.SetValue("ViewParams", new LxAnnotationValue(new LxAnnotationMap(inner)));
    map.SetValue("Name", new LxAnnotationValue("tex"));
    map.SetValue("Color", new LxAnnotationValue(LxVector4(1, 2, 3, 4)));
    map.SetValue("On", new LxAnnotationValue(true));

    EXPECT_FLOAT_EQ(3.0f, map.LookupFloat("ViewParams.MipLevels", 0.0f));
    EXPECT_TRUE(map.ValueExists("ViewParams.MipLevels"));
    EXPECT_FALSE(map.ValueExists("ViewParams.MipSlice"));
    EXPECT_FALSE(map.ValueExists("Name.MipLevels")); // a part before the last must be a map
    EXPECT_FALSE(map.ValueExists("ViewParams."));
    EXPECT_STREQ("tex", map.LookupString("Name", "").c_str());
    EXPECT_EQ(LxVector4(1, 2, 3, 4), map.LookupVector("Color", LxVector4()));
    EXPECT_TRUE(map.LookupBool("On", false));
    EXPECT_EQ(0, capture.ErrorCount());

    // Reading a value as another type reports and yields the default.
    EXPECT_FLOAT_EQ(9.0f, map.LookupFloat("Name", 9.0f));
    EXPECT_FALSE(map.LookupBool("Name", false));
    EXPECT_STREQ("d", map.LookupString("On", "d").c_str());
    EXPECT_EQ(LxVector4(), map.LookupVector("On", LxVector4()));
    EXPECT_EQ(nullptr, map.LookupValue("On")->GetMap());
    for (const std::string kind : {"float", "bool", "string", "vector", "map"})
        EXPECT_TRUE(capture.Contains("Trying to read a " + kind + " from an AnnotationValue that has another type."));

    // Insertion order, replacement and merging.
    map.SetValue("Name", new LxAnnotationValue("other"));
    ASSERT_EQ(4u, map.GetCount());
    EXPECT_STREQ("ViewParams", map.GetName(0).c_str());
    EXPECT_STREQ("other", map.GetValue(1)->GetString().c_str());
    LxAnnotationMap extra;
    extra.SetValue("On", new LxAnnotationValue(false));
    extra.SetValue("New", new LxAnnotationValue(1.0f));
    map.Merge(extra);
    EXPECT_EQ(5u, map.GetCount());
    EXPECT_FALSE(map.LookupBool("On", true));
    EXPECT_TRUE(map.RemoveValue("New"));
    EXPECT_FALSE(map.RemoveValue("New"));
}

TEST(LxVertexElement, TablesAndSemantics)
{
    unsigned int total = 0;
    for (unsigned int t = 0; t < LxVertexElement::NUM_DATA_TYPES; ++t)
    {
        total += LxVertexElement::ms_dataTypeSize[t];
        LxVertexElement::DataType back;
        ASSERT_TRUE(LxVertexElement::DataTypeFromString(LxVertexElement::DataTypeToString(LxVertexElement::DataType(t)),
                                                        &back));
        EXPECT_EQ(t, static_cast<unsigned int>(back));
    }
    EXPECT_EQ(226u, total); // a slip in the size table changes the sum

    LxString semantic;
    unsigned int index = 99;
    LxVertexElement(LxVertexElement::TYPE_FLOAT2, "TEXCOORD3").GetSemantic(&semantic, &index);
    EXPECT_STREQ("TEXCOORD", semantic.c_str());
    EXPECT_EQ(3u, index);
    LxVertexElement(LxVertexElement::TYPE_FLOAT3, "POSITION").GetSemantic(&semantic, &index);
    EXPECT_STREQ("POSITION", semantic.c_str());
    EXPECT_EQ(0u, index);
}

TEST(LxVertexStreamDecl, OffsetsStrideAndSemanticLookup)
{
    LxTest::LogCapture capture;
    LxVertexStreamDecl decl("S");
    decl.AppendVertexElement(new LxVertexElement(LxVertexElement::TYPE_FLOAT3, "POSITION"));
    decl.AppendVertexElement(new LxVertexElement(LxVertexElement::TYPE_UBYTE4N, "COLOR"));
    decl.AppendVertexElement(new LxVertexElement(LxVertexElement::TYPE_HALF2, "TEXCOORD", "a"));
    decl.AppendVertexElement(new LxVertexElement(LxVertexElement::TYPE_HALF2, "TEXCOORD", "b"));
    EXPECT_EQ(24u, decl.GetStride());
    EXPECT_EQ(16u, decl.GetElementOffset(decl.GetElement(2)));
    EXPECT_EQ(20u, decl.GetElementOffset(decl.GetElement(3)));
    LxVertexElement stranger(LxVertexElement::TYPE_FLOAT, "X");
    EXPECT_EQ(0u, decl.GetElementOffset(&stranger));
    EXPECT_TRUE(capture.Contains("Invalid vertex element passed to GetElementOffset!!"));
    LxArray<const LxVertexElement*> found;
    decl.GetElementsBySemantic("TEXCOORD", found);
    ASSERT_EQ(2u, found.GetCount());
    EXPECT_STREQ("b", found[1]->GetSecondName().c_str());
}

TEST(LxShaderResourceSlot, ViewParamsReadFloatsScriptVariablesAndChecks)
{
    class Script : public LxScriptVariableSource
    {
    public:
        bool GetNumber(const LxString& name, double& value) override
        {
            if (name != "DrawScriptEnv.mips")
                return false;
            value = 4.0;
            return true;
        }
    } script;
    LxTest::LogCapture capture;
    std::unique_ptr<LxEffect> fx = LxFxTest::Parse(
        "Texture2D t < ViewParams = < MipSlice = 1, MipLevels = < ScriptVariable = \"mips\" >, "
        "ArraySize = < ScriptVariable = \"nothing\" >, WSize = 2, FirstArraySlice = \"x\" > >\n"
        "Buffer b < ViewParams = < ElementFormat = \"uint3\" > >\nBuffer b2 < ViewParams = < ElementFormat = \"half\" "
        "> >\n"
        "Texture3D v < ViewParams = < ArraySize = 2 > >\nTextureCube c < ViewParams = < FirstWSlice = 1 > >\n"
        "Texture2D notMap < ViewParams = 3 >\nRWBuffer u < ViewParams = < Counter = true > >\n"
        "RWBuffer u2 < ViewParams = < Counter = 1 > >\n");
    ASSERT_TRUE(fx) << capture.All();
    LxScriptVariableSource::SetGlobal(&script);
    LxSlotViewParams p;
    EXPECT_FALSE(fx->GetTextureSlot("t")->ReadViewParams(&p));
    LxScriptVariableSource::SetGlobal(nullptr);
    EXPECT_EQ(1u, p.values[LxSlotViewParams::MIP_SLICE]);
    EXPECT_EQ(4u, p.values[LxSlotViewParams::MIP_LEVELS]);
    EXPECT_FALSE(p.present[LxSlotViewParams::ARRAY_SIZE]);
    EXPECT_TRUE(
        capture.Contains("Script variable named: DrawScriptEnv.nothing does not exist, or does not refer to a number"));
    EXPECT_TRUE(
        capture.Contains("Value of view parameter 'FirstArraySlice' must either be of type FLOAT or be bound to "
                         "a script variable"));
    EXPECT_TRUE(capture.Contains("W slice annotations are not used on views of Texture2D slots.  Are you confused??"));

    EXPECT_TRUE(fx->GetTextureSlot("b")->ReadViewParams(&p));
    EXPECT_STREQ("uint3", p.elementFormat.c_str());
    EXPECT_FALSE(fx->GetTextureSlot("b2")->ReadViewParams(&p));
    EXPECT_TRUE(capture.Contains("Unrecognized view format: 'half'"));
    fx->GetTextureSlot("v")->ReadViewParams(&p);
    EXPECT_TRUE(
        capture.Contains("Array slice annotations are not used on views of Texture3D slots.  Are you confused??"));
    fx->GetTextureSlot("c")->ReadViewParams(&p);
    EXPECT_TRUE(
        capture.Contains("W slice annotations are not used on views of TextureCube slots.  Are you confused??"));
    EXPECT_FALSE(fx->GetTextureSlot("notMap")->ReadViewParams(&p));
    EXPECT_TRUE(capture.Contains("'ViewParams' slot annotation must have type 'MAP'"));
    EXPECT_TRUE(fx->GetUAVSlot("u")->ReadViewParams(&p));
    EXPECT_TRUE(p.hasCounter && p.counter);
    EXPECT_FALSE(fx->GetUAVSlot("u2")->ReadViewParams(&p));
    EXPECT_TRUE(capture.Contains("Value of 'Counter' view parameter must be of type BOOL"));
}

namespace
{
using LxFxTest::RecordingBuilder;
const char* kTwoPasses = "Technique T\n{\n"
                         "  Pass A { VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader }\n"
                         "  Pass B { VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader }\n}\n"
                         "BaseTechnique Abstract { Pass A { } }\n";
} // namespace

TEST(LxEffect, DrawingSequenceBindsPassesThroughThePlatformPassAndReportsViolations)
{
    LxTest::LogCapture capture;
    RecordingBuilder builder;
    std::unique_ptr<LxEffect> fx = LxFxTest::Parse(kTwoPasses, "draw.fx", &builder);
    ASSERT_TRUE(fx) << capture.All();
    LxFxTest::RecordingDrawContext context;
    LxEffectDrawContext::SetGlobal(&context);
    LxFxTest::RecordingPass::Calls().clear();

    unsigned int passes = 0;
    ASSERT_TRUE(fx->Begin("T", &passes));
    EXPECT_EQ(2u, passes);
    for (unsigned int i = 0; i < passes; ++i)
    {
        EXPECT_TRUE(fx->BeginPass(i));
        EXPECT_EQ(static_cast<int>(i), fx->GetActivePassIndex());
        EXPECT_TRUE(fx->EndPass());
    }
    EXPECT_TRUE(fx->End());
    LxEffectDrawContext::SetGlobal(nullptr);
    const std::vector<std::string> expected = {"current 0 of draw.fx", "bind A of draw.fx", "unbind A",
                                               "current 1 of draw.fx", "bind B of draw.fx", "unbind B"};
    EXPECT_EQ(expected, LxFxTest::RecordingPass::Calls());
    EXPECT_EQ(0, capture.ErrorCount()) << capture.All();

    // Violations of the sequence are reported and change nothing.
    EXPECT_FALSE(fx->BeginPass(0));
    EXPECT_TRUE(capture.Contains("LxEffect::BeginPass called without calling LxEffect::Begin first"));
    EXPECT_FALSE(fx->EndPass());
    EXPECT_TRUE(capture.Contains("LxEffect::EndPass called without calling LxEffect::BeginPass first"));
    EXPECT_FALSE(fx->End());
    EXPECT_TRUE(capture.Contains("LxEffect::End called without matching LxEffect::Begin"));
    EXPECT_FALSE(fx->Begin("Missing", nullptr));
    EXPECT_TRUE(capture.Contains("Technique Missing not found"));
    EXPECT_FALSE(fx->Begin("Abstract", nullptr));
    EXPECT_TRUE(capture.Contains("Technique Abstract is a base technique and cannot be drawn"));

    ASSERT_TRUE(fx->Begin(fx->GetTechnique("T"), nullptr));
    EXPECT_FALSE(fx->Begin("T", nullptr));
    EXPECT_TRUE(capture.Contains("Nested calls to LxEffect::Begin not allowed"));
    EXPECT_FALSE(fx->BeginPass(2));
    EXPECT_TRUE(capture.Contains("Invalid pass index"));
    EXPECT_TRUE(fx->BeginPass(0));
    EXPECT_FALSE(fx->BeginPass(1));
    EXPECT_TRUE(capture.Contains("Nested calls to LxEffect::BeginPass not allowed"));
    EXPECT_TRUE(fx->End()); // closes the open pass too
    EXPECT_EQ(nullptr, fx->GetActivePass());
    EXPECT_TRUE(fx->Begin("T", nullptr)); // usable again

    // The generic pass cannot draw.
    std::unique_ptr<LxEffect> generic = LxFxTest::Parse(kTwoPasses, "generic.fx");
    ASSERT_TRUE(generic);
    ASSERT_TRUE(generic->Begin("T", nullptr));
    EXPECT_FALSE(generic->BeginPass(0));
    EXPECT_TRUE(capture.Contains("LxEffectPass::Bind ::: IMPLEMENT ME!"));
}

#include "GPUResourceManager/LxGPUTestResources.h"

TEST(LxEffect, BindingsByNameAndViewsMadeFromViewParams)
{
    using LxTest::FakeDataBuffer;
    using LxTest::FakeTexture2D;
    using LxTest::FakeTexture3D;
    using LxTest::FakeTextureCube;
    const unsigned binds = LxGPUResource::BIND_SHADER_RESOURCE | LxGPUResource::BIND_UNORDERED_ACCESS;
    FakeTexture2D tex(LxGPUResource::GPU_RESOURCE_STATIC, binds, 0, 0, LX_FORMAT_R8G8B8A8_UNORM, 64, 64, 4, 0,
                      LxGPUTexture::MIP_NONE);
    FakeTexture3D volume(LxGPUResource::GPU_RESOURCE_STATIC, binds, 0, 0, LX_FORMAT_R8G8B8A8_UNORM, 8, 8, 8, 1,
                         LxGPUTexture::MIP_NONE);
    FakeTextureCube cube(LxGPUResource::GPU_RESOURCE_STATIC, binds, 0, 0, LX_FORMAT_R8G8B8A8_UNORM, 16, 1, 1,
                         LxGPUTexture::MIP_NONE);
    FakeDataBuffer buffer(LxGPUResource::GPU_RESOURCE_STATIC, binds, 0, 256);

    LxTest::LogCapture capture;
    std::unique_ptr<LxEffect> fx = LxFxTest::Parse(
        "Texture2D t < ViewParams = < MipSlice = 1, MipLevels = 2, FirstArraySlice = 1, ArraySize = 2 > >\n"
        "TextureCube c < >\nTexture3D v < >\nBuffer b < ViewParams = < ElementFormat = \"float4\" > >\n"
        "RWTexture2D u < >\nAppendStructuredBuffer a < >\nRWBuffer rb < >\nStream S { float3 POSITION }\n"
        "Texture2D tail < ViewParams = < MipSlice = 2, FirstArraySlice = 1 > >\n");
    ASSERT_TRUE(fx) << capture.All();

    // Views made from the slot's view parameters; a start without a count views the rest of the chain and the
    // rest of the array.
    ASSERT_TRUE(fx->BindTextureResource("t", tex) && fx->BindTextureResource("tail", tex)) << capture.All();
    auto view = [&](unsigned short firstMip, unsigned short mips, unsigned short firstSlice, unsigned short slices)
    {
        return LxGPUResourceViewDescription(LX_VIEW_SAMPLING, LX_FORMAT_R8G8B8A8_UNORM, LxGPUResource::TEXTURE_2D_ARRAY,
                                            LxGPUResourceDescription::Texture(firstMip, mips, firstSlice, slices));
    };
    EXPECT_EQ(view(1, 2, 1, 2), fx->GetBoundTexture("t")->GetDescription());
    EXPECT_EQ(view(2, tex.GetMipCount() - 2, 1, 3), fx->GetBoundTexture("tail")->GetDescription());
    ASSERT_TRUE(fx->BindTextureResource("b", buffer));
    const LxGPUResourceViewDescription& bd = fx->GetBoundTexture("b")->GetDescription();
    EXPECT_EQ(LX_FORMAT_R32G32B32A32_FLOAT, bd.format);
    EXPECT_EQ(16u, bd.resourceDesc.buffer.numElements);
    EXPECT_TRUE(fx->BindTextureResource("c", cube));
    EXPECT_TRUE(fx->BindTextureResource("v", volume));
    EXPECT_TRUE(fx->BindUAVResource("u", tex));
    ASSERT_TRUE(fx->BindUAVResource("a", buffer));
    EXPECT_TRUE(fx->GetBoundUAV("a")->GetDescription().flags & LxGPUResourceViewDescription::FLAG_APPEND);

    // Kind checks.
    EXPECT_FALSE(fx->BindTextureResource("t", volume));
    EXPECT_TRUE(capture.Contains("Can only bind cubemaps and tex2D arrays to a 2D texture slot."));
    EXPECT_FALSE(fx->BindTextureResource("v", tex));
    EXPECT_TRUE(capture.Contains("Cannot bind another resource type to a Texture3D texture slot."));
    EXPECT_FALSE(fx->BindTextureResource("c", tex));
    EXPECT_TRUE(capture.Contains("Cannot bind a non-cubemap to a TextureCube texture slot."));
    EXPECT_FALSE(fx->BindTextureResource("b", tex));
    EXPECT_TRUE(capture.Contains("Cannot bind a non-buffer to a buffer texture slot."));
    EXPECT_FALSE(fx->BindUAVResource("u", buffer));
    EXPECT_TRUE(capture.Contains("Can only bind cubemaps and tex2D arrays to a 2D UAV slot."));
    EXPECT_FALSE(fx->BindUAVResource("rb", tex));
    EXPECT_TRUE(capture.Contains("Cannot bind a non-buffer to a buffer UAV slot."));

    // Unknown names, vertex buffers with offsets, clearing.
    EXPECT_FALSE(fx->BindTexture("nope", LxCountedPtr<LxGPUSamplingResourceView>()));
    EXPECT_TRUE(capture.Contains("LxEffect::BindTexture: Unknown texture slot name \"nope\""));
    EXPECT_FALSE(fx->GetBoundTexture("nope"));
    EXPECT_TRUE(capture.Contains("LxEffect::GetBoundTexture: Unknown texture slot name \"nope\""));
    LxCountedPtr<LxGPUVertexBuffer> vb(new LxGPUVertexBuffer(LxGPUResource::GPU_RESOURCE_STATIC, 0, 0, 0, 12, 4));
    EXPECT_FALSE(fx->BindVertexBuffer("T", vb));
    EXPECT_TRUE(capture.Contains("LxEffect::BindVertexBuffer: Unknown stream name \"T\""));
    EXPECT_FALSE(fx->GetBoundVertexBuffer("T"));
    EXPECT_TRUE(capture.Contains("LxEffect::GetBoundVertexBuffer: Unknown stream name \"T\""));
    ASSERT_TRUE(fx->BindVertexBuffer("S", vb, 24));
    unsigned int offset = 0;
    EXPECT_EQ(vb, fx->GetBoundVertexBuffer(fx->GetVertexStreamDecl("S"), &offset));
    EXPECT_EQ(24u, offset);
    EXPECT_TRUE(fx->BindVertexBuffer("S", LxCountedPtr<LxGPUVertexBuffer>()));
    EXPECT_FALSE(fx->GetBoundVertexBuffer("S"));
    EXPECT_TRUE(fx->BindTexture("t", LxCountedPtr<LxGPUSamplingResourceView>()));
    EXPECT_FALSE(fx->GetBoundTexture("t"));
}
