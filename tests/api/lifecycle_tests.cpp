#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "api/vrl.h"
#include "host/canceler.h"
#include "host/engine_binding.h"
#include "host/nub_error.h"
#include "refhost/engine/binding.h"
#include "tests/support/quiet_reports.h"
#include "tests/support/shapes.h"
#include "tests/support/thrown_int.h"

using NUB_T_MT::CNUBError;

namespace {

// A host that never unregisters anything: nothing is looked up again for the count's sake.
std::int32_t* SteadyCount() {
    static std::int32_t count = 0;
    return &count;
}

// Leaves the library bound and the engine whole, whatever a test did.
class Lifecycle : public testing::Test {
 protected:
    ~Lifecycle() override {
        refhost::DisarmFaults();
        refhost::RestoreProcedures();
        VRL_Death();
        VRL_Birth();
    }

    const support::QuietReports quiet_;

    static void UnbindFromSteadyHost() {
        VRL_Death();
        refhost::RestoreProcedures();
        refhost::OverrideProcedure("NUBInterface", "GetUnregisterCountAddr", reinterpret_cast<void*>(&SteadyCount));
    }
    static std::int32_t RenderSmallMask() {
        const VRL_MaskParams params = PlainParams();
        GW_UnoBuffer buffer(8, 8, 8);
        return VRL_MaskWithShape(Rectangle(1, 1, 5, 5).get(), &params, nullptr, &buffer, nullptr);
    }
};

std::string MessageOf(void (*call)()) {
    try {
        call();
    } catch (const CNUBError& error) {
        return std::string(error.Component()) + ":" + error.what();
    }
    return "nothing thrown";
}

const char* NoSignature(NUBContainer*) { return nullptr; }
const NUBErrorObject* NoPainter(NUBContainer**, std::int32_t, const M_Vector2T<float>*, const PIVPointType*, std::int32_t,
                                std::int32_t, const PIVMatrix*, const PIVDeviceRect*) {
    return nullptr;
}
}  // namespace

TEST_F(Lifecycle, BirthFailsAsTheHostFailsAndLeavesNothingBehind) {
    const int objects = refhost::LiveEngineObjects();
    for (const char* interface_name :
         {"GRXNewPathInterface", "GRXPathInterface", "TAV_BezierPathRasterPainterInterface", "NUBContainerInterface"}) {
        UnbindFromSteadyHost();
        refhost::OverrideProcedure(interface_name, nullptr, nullptr);
        EXPECT_EQ(MessageOf(VRL_Birth), ":Missing Interface") << interface_name;
        EXPECT_EQ(RenderSmallMask(), -1);
        EXPECT_EQ(refhost::LiveEngineObjects(), objects) << interface_name;
        refhost::RestoreProcedures();
        EXPECT_EQ(MessageOf(VRL_Birth), "nothing thrown") << "it is there now";
        EXPECT_EQ(RenderSmallMask(), 0);
    }
    UnbindFromSteadyHost();
    refhost::OverrideProcedure("PIVRasterPainter", "GetInfo", nullptr);
    EXPECT_EQ(MessageOf(VRL_Birth), "nothing thrown") << "a birth only makes a painter and releases it";
    refhost::RestoreProcedures();
    refhost::FailHostCall(refhost::HostCall::kNewFill, 1, 9);
    EXPECT_EQ(MessageOf(VRL_Birth), "GRX:injected failure");
    EXPECT_EQ(refhost::LiveEngineObjects(), objects);
}

TEST_F(Lifecycle, MasksFailWhileUnboundAndWorkAfterAnyBirth) {
    for (const int births_before : {0, 1, 2}) {
        UnbindFromSteadyHost();
        for (int i = 0; i < births_before; ++i) VRL_Birth();
        VRL_Death();
        VRL_Death();
        refhost::TakeReports();
        EXPECT_EQ(RenderSmallMask(), -1);
        EXPECT_THAT(refhost::TakeReports().front().text, testing::HasSubstr("VRL_Birth"));
        VRL_Birth();
        EXPECT_EQ(RenderSmallMask(), 0) << births_before;
    }
}

TEST_F(Lifecycle, WithdrawnProceduresAreMissedAndReboundWhenTheyReturn) {
    const auto missing = [](const char* interface_name, const char* method, void* instead = nullptr) {
        refhost::TakeReports();
        refhost::OverrideProcedure(interface_name, method, instead);
        EXPECT_EQ(RenderSmallMask(), -1);
        refhost::RestoreProcedures();
        const auto reports = refhost::TakeReports();
        return reports.empty() ? std::string("no report") : reports.front().text;
    };
    EXPECT_EQ(missing("TAV_BezierPathRasterPainterInterface", nullptr), "Missing Interface");
    EXPECT_EQ(missing("GRXNewPathInterface", nullptr), "missing procedure");
    EXPECT_EQ(missing("GRXPathInterface", "GetPathData"), "missing procedure");
    EXPECT_EQ(missing("PIVRasterPainter", "GetInfo"), "missing procedure");
    EXPECT_EQ(missing("NUBContainerInterface", nullptr), "missing procedure");
    EXPECT_EQ(missing("NUBContainerInterface", "GetSignature", reinterpret_cast<void*>(&NoSignature)), "couldn't get signature");
    EXPECT_EQ(missing("TAV_BezierPathRasterPainterInterface", "NewFill", reinterpret_cast<void*>(&NoPainter)),
              "invalid container");
    EXPECT_EQ(RenderSmallMask(), 0);
    EXPECT_EQ(refhost::LiveEngineObjects(), 0);
    try {
        refhost::OverrideProcedure("GRXPathInterface", "Transform", nullptr);
        NUB_T_MT::PathTransform();
        ADD_FAILURE();
    } catch (const CNUBError& error) {
        EXPECT_STREQ(error.Component(), "NUB");
    }
}

TEST(MessageTable, HoldsFiveTextsAndAnEnd) {
    EXPECT_STREQ(VRL_G_zref->module, "VRL");
    ASSERT_EQ(VRL_G_zref->count, 6);
    EXPECT_STREQ(VRL_G_zref->entries[0].key, "$$$/QZ/VRL/LStr/0000=invalid shape type");
    EXPECT_STREQ(YQ_ZLookupLStrCache(VRL_G_zref, 4, 0, 0), "non-specific error doing mask expansion");
    const YQ_LStrEntry& end = VRL_G_zref->entries[5];
    EXPECT_EQ(end.key, nullptr);
    EXPECT_EQ(end.cache[0], -1);
    EXPECT_EQ(end.cache[1], -1);
    EXPECT_EQ(end.cache[2], 0);
}

TEST(ProgPtrCanceler, OnlyTheMainThreadAsksAndTheFirstCodeWins) {
    static std::atomic<int> calls;
    static std::atomic<int> answer;
    calls = 0;
    answer = 0;
    const GW_ProgressInfo progress = {nullptr, [](void*) -> std::int32_t { return ++calls, answer; }, nullptr};
    std::int32_t code = 0;
    const VRLp_ProgPtrCanceler canceler(&progress, &code);
    const auto thrown = [&] { return ThrownInt([&] { canceler.Check(); }); };
    EXPECT_EQ(thrown(), 0);
    answer = 5;
    std::thread([&] { EXPECT_EQ(thrown(), 0); }).join();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(thrown(), 5);
    answer = 6;
    EXPECT_EQ(thrown(), 5);
    std::thread([&] { EXPECT_EQ(thrown(), 5); }).join();
    answer = 0;
    EXPECT_EQ(thrown(), 5);  // never returns to 0
    EXPECT_EQ(calls, 4);

    std::int32_t silent = 0;
    const VRLp_ProgPtrCanceler without(nullptr, &silent);
    EXPECT_NO_THROW(without.Check());
}
