#include <stdio.h>
#include <zav.h>

int main(void) {
    ZAVCtx* zav = NULL;
    ZAVHwCtx* hw = NULL;
    const wchar_t* name = NULL;
    int code = ZAV_init("consumer", NULL, NULL, NULL, L"/none", &zav);
    if (code == ZAV_SUCCESS) code = ZAV_hw_init(zav, NULL, NULL, &hw);
    if (code == ZAV_SUCCESS) code = ZAV_hw_get_group_name(hw, 4, &name);
    if (code == ZAV_SUCCESS) printf("%ls\n", name);
    if (code == ZAV_SUCCESS) code = ZAV_hw_free(hw);
    if (code == ZAV_SUCCESS) code = ZAV_free(zav);
    return code;
}
