#include <gmock/gmock.h>

#include "api/vrl.h"
#include "refhost/refhost.h"

namespace {

class BoundLibrary : public testing::Environment {
    void SetUp() override {
        refhost::Initialize();
        VRL_Birth();
    }
    void TearDown() override { VRL_Death(); }
};

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    testing::AddGlobalTestEnvironment(new BoundLibrary);
    return RUN_ALL_TESTS();
}
