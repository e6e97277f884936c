// A mask whose feather varies along its outline, made with installed headers only: wide on the right, none on the left.
#include "api/vrl.h"
#include "refhost/refhost.h"
#include "refhost/shape/feather_points.h"

int main() {
    refhost::Initialize();
    VRL_Birth();
    DY_Shape square(kShapeTypeBezier, nullptr);
    constexpr WEX_Item corners[] = {{10, 10}, {30, 10}, {30, 30}, {10, 30}};
    for (int i = 0; i < 12; ++i) WEX_Insert(&corners[(i + 1) / 3 % 4], -1, square.GetPoints());
    refhost::SetFeatherPoints(square, {{1.5, 8}, {3.5, 0}});  // the middles of the right and of the left side
    const VRL_MaskParams params;
    GW_UnoBuffer buffer(40, 40, 8);
    const int status = VRL_MaskWithShape(&square, &params, nullptr, &buffer, nullptr);
    const GW_Pixel8* const row = buffer.Row<GW_Pixel8>(20);
    const bool feathered = row[33] > 0 && row[33] < 255 && row[8] == 0;
    VRL_Death();
    return status == 0 && feathered ? 0 : 1;
}
