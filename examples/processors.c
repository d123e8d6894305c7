#include <locale.h>
#include <stdio.h>
#include <zav.h>

int main(void) {
    ZAVCtx* zav;
    ZAVHwCtx* hw;
    const wchar_t* name;
    setlocale(LC_ALL, "");
    if (ZAV_init("my product", NULL, NULL, NULL, TOOLKIT, &zav) != 0) return 1;
    if (ZAV_hw_init(zav, NULL, NULL, &hw) != 0) return 1;
    ZAV_hw_setopt(hw, ZAV_HW_PROCESSOR, 1);
    if (ZAV_hw_run(hw) == 0)
        for (int i = 0; ZAV_hw_get_value(hw, ZAV_HW_PROCESSOR, i, L"Name", &name) == 0; ++i)
            printf("%ls\n", name);
    ZAV_hw_free(hw);
    return ZAV_free(zav);
}
