#include <locale.h>
#include <stdio.h>
#include <zav.h>

static const wchar_t kSignature[] =
    L"<Signature guid='bash' name='GNU Bash'><Match><Package id='p' name='bash'/></Match>"
    L"<Output><Variable name='version' value='${p.upstream}'/></Output></Signature>";

int main(void) {
    ZAVCtx* zav;
    ZAVSwCtx* sw;
    ZAVSwResult* bash;
    const wchar_t* version;
    setlocale(LC_ALL, "");
    if (ZAV_init("my product", NULL, NULL, NULL, TOOLKIT, &zav) != 0) return 1;
    if (ZAV_sw_init(zav, NULL, NULL, &sw) != 0) return 1;
    if (ZAV_sw_evaluate(sw, kSignature) == 0 && ZAV_sw_find_result_by_guid(sw, L"bash", &bash) == 0 &&
        ZAV_sw_get_value(sw, bash, L"version", &version) == 0)
        printf("bash %ls\n", version);
    ZAV_sw_free(sw);
    return ZAV_free(zav);
}
