/*
 * A consumer of the installed public headers and libraries, written in C as
 * a platform's or framework's code would be: it checks the shared records'
 * sizes, calls a few exported entries and prints what they produced.
 */
#include <stdio.h>
#include <string.h>

#include "mdtlm_platform.h"
#include "mdtlm_version.h"
#include "mdtlm_vraldcn.h"

int main(void)
{
    char text[64];
    uint8_t varint[10];
    const uint8_t mac[6] = {0x00, 0x1b, 0x2c, 0x3d, 0x4e, 0x5f};

    if (sizeof(MDTLM_TASK_DATA) != 3544 || sizeof(MDTLM_SAMPLE_BUFFER) != 48 + 24576) {
        fprintf(stderr, "shared record sizes differ from the library's\n");
        return 1;
    }
    if (MDTLM_VRALDCN_ConvertIpv4AddrToStr(0x0A000102u, text, sizeof(text)) != 0) {
        fprintf(stderr, "IPv4 formatting failed\n");
        return 1;
    }
    printf("ipv4 %s\n", text);
    if (MDTLM_VRALDCN_ConvertMacAddrToStr(mac, text, sizeof(text)) != 0) {
        fprintf(stderr, "MAC formatting failed\n");
        return 1;
    }
    printf("mac %s\n", text);
    printf("varint300 %d bytes\n", (int)MDTLM_VRALDCN_GPB_EncodeVarint(300, varint, (int32_t)sizeof(varint)));
    printf("version %s\n", MDTLM_VERSION_STRING);
    return 0;
}
