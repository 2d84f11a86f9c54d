/* A shared library that loads and provides none of the platform services. */
int mdtlm_empty_library_marker(void)
{
    return 0;
}
