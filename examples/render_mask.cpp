// Renders a feathered diamond and prints it.
#include <cstdio>

#include "api/vrl.h"
#include "refhost/refhost.h"

int main() {
    refhost::Initialize();
    VRL_Birth();
    DY_Shape diamond(kShapeTypeBezier, nullptr);
    constexpr WEX_Item corners[] = {{32, 2}, {62, 16}, {32, 30}, {2, 16}};
    for (int i = 0; i < 12; ++i) WEX_Insert(&corners[(i + 1) / 3 % 4], -1, diamond.GetPoints());  // handles on the vertices
    VRL_MaskParams params = {.feather_x = 4 * 65536, .feather_y = 4 * 65536, .opacity = 65536, .quality = 1};
    GW_UnoBuffer buffer(64, 32, 8);
    const int status = VRL_MaskWithShape(&diamond, &params, nullptr, &buffer, nullptr);
    for (int y = 0; y < buffer.height; ++y, std::putchar('\n'))
        for (int x = 0; x < buffer.width; ++x) std::putchar(" .:-=+*#%@"[buffer.Row<GW_Pixel8>(y)[x] * 9 / 255]);
    VRL_Death();
    return status;
}
