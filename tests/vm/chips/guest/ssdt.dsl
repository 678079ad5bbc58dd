// A thermal zone and a power meter, whose values lie in memory at 0x10000000: tenths of Kelvin, a word that makes the
// thermal zone fail where it is not 0, milliwatts. The kernel's command line keeps that memory free.
DefinitionBlock ("", "SSDT", 2, "TEST", "TESTHERM", 1)
{
    Scope (\_SB)
    {
        OperationRegion (MEMR, SystemMemory, 0x10000000, 0x100)
        Field (MEMR, DWordAcc, NoLock, Preserve) { TEMP, 32, FAIL, 32, POWR, 32 }
        Device (PMT0)
        {
            Name (_HID, "ACPI000D")
            Method (_PMC) { Return (Package () { 1, 0, 0, 95000, 1000, 1000, 10000, 10, 0, 0, 500000, "M", "S", "O" }) }
            Method (_PMM) { Return (POWR) }
            Method (_PMD) { Return (Package () { \_SB }) }
        }
    }
    Scope (\_TZ)
    {
        ThermalZone (TZ00)
        {
            Name (_TZP, 50)
            Method (_CRT) { Return (3731) }
            Method (_TMP, 0, Serialized)
            {
                If (\_SB.FAIL != 0) { Local0 = 0  Local1 = 1 / Local0 }
                Return (\_SB.TEMP)
            }
        }
    }
}
