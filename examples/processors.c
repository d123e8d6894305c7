#include <stdio.h>
#include <zav.h>

int main(void) {
    ZAVCtx* zav;
    ZAVHwCtx* hw;
    const wchar_t* name;
    if (ZAV_init("my product", NULL, NULL, NULL, L"/opt/zav/bin", &zav) != 0) return 1;
    if (ZAV_hw_init(zav, NULL, NULL, &hw) != 0) return 1;
    ZAV_hw_setopt(hw, 2, 1); /* group 2 is Processor */
    if (ZAV_hw_run(hw) == 0)
        for (int i = 0; ZAV_hw_get_value(hw, 2, i, L"Name", &name) == 0; ++i) printf("%ls\n", name);
    ZAV_hw_free(hw);
    return ZAV_free(zav);
}
