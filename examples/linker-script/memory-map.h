#ifndef MEMORY_MAP_H
#define MEMORY_MAP_H

/* The memory of the chip, for the C sources and for the linker script alike. */
#define FLASH_START 0x08000000
#define FLASH_SIZE (256 * 1024)
#define RAM_START 0x20000000
#define RAM_SIZE (32 * 1024)

#ifdef WITH_BOOTLOADER
#define BOOTLOADER_SIZE (16 * 1024)
#else
#define BOOTLOADER_SIZE 0
#endif

#endif
