/* Talks to the capture driver: starts and stops it, and has raw frames converted.
 *
 *   capture_tool start DRIVER.sys      make a service of the driver and start it
 *   capture_tool test OUT              write the picture that the driver made when it was loaded
 *   capture_tool convert WIDTH HEIGHT STRIDE PICTURE DECIMATION QUALITY H_MIRROR V_MIRROR OUT RAW...
 *                                      convert raw frames on one stream, write the pictures behind one another
 *   capture_tool stop                  stop the driver and remove its service
 */
#include <windows.h>
#include <winioctl.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "capture.h"

#define SERVICE_NAME "ppl-capture"

static int failed(const char* what) {
  fprintf(stderr, "capture_tool: %s: error %lu\n", what, GetLastError());
  return 1;
}

/* Windows starts a driver before StartService returns; Wine may still be at it. */
static BOOL wait_until_running(SC_HANDLE service) {
  SERVICE_STATUS status;
  int tries;
  for (tries = 0; tries < 500 && QueryServiceStatus(service, &status); ++tries) {
    if (status.dwCurrentState == SERVICE_RUNNING) {
      return TRUE;
    }
    if (status.dwCurrentState == SERVICE_STOPPED && status.dwWin32ExitCode != NO_ERROR) {
      SetLastError(status.dwWin32ExitCode);
      return FALSE;
    }
    Sleep(20);
  }
  SetLastError(ERROR_SERVICE_REQUEST_TIMEOUT);
  return FALSE;
}

static int start(const char* driver) {
  char path[MAX_PATH];
  SC_HANDLE manager = OpenSCManagerA(NULL, NULL, SC_MANAGER_ALL_ACCESS);
  SC_HANDLE service;
  int result = 0;
  if (manager == NULL) {
    return failed("no access to the service manager");
  }
  if (GetFullPathNameA(driver, sizeof path, path, NULL) == 0) {
    return failed(driver);
  }
  service =
      CreateServiceA(manager, SERVICE_NAME, "ppl capture example", SERVICE_ALL_ACCESS, SERVICE_KERNEL_DRIVER,
                     SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL, path, NULL, NULL, NULL, NULL, NULL);
  if (service == NULL && GetLastError() == ERROR_SERVICE_EXISTS) {
    service = OpenServiceA(manager, SERVICE_NAME, SERVICE_ALL_ACCESS);
  }
  if (service == NULL) {
    return failed("cannot make the service");
  }
  if (!StartServiceA(service, 0, NULL) || !wait_until_running(service)) {
    result = failed("cannot start the driver");
    DeleteService(service);
  }
  CloseServiceHandle(service);
  CloseServiceHandle(manager);
  return result;
}

static int stop(void) {
  SERVICE_STATUS status;
  SC_HANDLE manager = OpenSCManagerA(NULL, NULL, SC_MANAGER_ALL_ACCESS);
  SC_HANDLE service = manager != NULL ? OpenServiceA(manager, SERVICE_NAME, SERVICE_ALL_ACCESS) : NULL;
  int result = 0;
  if (service == NULL) {
    return failed("no such service");
  }
  if (!ControlService(service, SERVICE_CONTROL_STOP, &status)) {
    result = failed("cannot stop the driver");
  }
  DeleteService(service);
  CloseServiceHandle(service);
  CloseServiceHandle(manager);
  return result;
}

static HANDLE open_device(void) {
  return CreateFileA(CAPTURE_PATH, GENERIC_READ | GENERIC_WRITE, 0, NULL, OPEN_EXISTING, 0, NULL);
}

static int write_file(const char* name, const char* mode, const void* bytes, size_t size) {
  FILE* f = fopen(name, mode);
  const int good = f != NULL && fwrite(bytes, 1, size, f) == size;
  if (f != NULL && fclose(f) == 0 && good) {
    return 0;
  }
  fprintf(stderr, "capture_tool: cannot write %s\n", name);
  return 1;
}

static int test(const char* name) {
  static uint8_t picture[CAPTURE_TEST_PICTURE_BYTES];
  DWORD given = 0;
  HANDLE device = open_device();
  if (device == INVALID_HANDLE_VALUE) {
    return failed("cannot open the device");
  }
  if (!DeviceIoControl(device, CAPTURE_GET_TEST_PICTURE, NULL, 0, picture, sizeof picture, &given, NULL)) {
    return failed("no test picture");
  }
  CloseHandle(device);
  return write_file(name, "wb", picture, given);
}

static int convert(char** number, const char* out_name, char** raw_names, int frames) {
  struct capture_format format = {(uint32_t)atoi(number[0]), (uint32_t)atoi(number[1]),
                                  (uint32_t)atoi(number[2]), (uint32_t)atoi(number[3]),
                                  atoi(number[4]),           (uint32_t)atoi(number[5]),
                                  (uint32_t)atoi(number[6]), (uint32_t)atoi(number[7])};
  const uint32_t raw_bytes = format.stride * format.height;
  const uint32_t picture_bytes = 4 * capture_picture_bytes(format.picture, format.width, format.height);
  struct capture_statistics statistics;
  uint8_t* raw = malloc(raw_bytes);
  uint8_t* picture = malloc(picture_bytes);
  DWORD given = 0;
  int i, result = 0;
  HANDLE device = open_device();
  if (device == INVALID_HANDLE_VALUE) {
    return failed("cannot open the device");
  }
  if (raw == NULL || picture == NULL) {
    return failed("no memory");
  }
  if (!DeviceIoControl(device, CAPTURE_SET_FORMAT, &format, sizeof format, NULL, 0, &given, NULL)) {
    return failed("the driver refuses the format");
  }
  for (i = 0; i < frames && result == 0; ++i) {
    FILE* f = fopen(raw_names[i], "rb");
    const size_t got = f != NULL ? fread(raw, 1, raw_bytes, f) : 0;
    if (f != NULL) {
      fclose(f);
    }
    if (got != raw_bytes) {
      fprintf(stderr, "capture_tool: %s holds no %u bytes\n", raw_names[i], raw_bytes);
      return 1;
    }
    if (!DeviceIoControl(device, CAPTURE_CONVERT, raw, raw_bytes, picture, picture_bytes, &given, NULL)) {
      return failed("the driver refuses the frame");
    }
    result = write_file(out_name, i == 0 ? "wb" : "ab", picture, given);
  }
  if (DeviceIoControl(device, CAPTURE_GET_STATISTICS, NULL, 0, &statistics, sizeof statistics, &given,
                      NULL)) {
    printf("means %u %u %u\n", statistics.mean_r, statistics.mean_g, statistics.mean_b);
  }
  CloseHandle(device);
  free(raw);
  free(picture);
  return result;
}

int main(int argc, char** argv) {
  if (argc == 3 && strcmp(argv[1], "start") == 0) {
    return start(argv[2]);
  }
  if (argc == 2 && strcmp(argv[1], "stop") == 0) {
    return stop();
  }
  if (argc == 3 && strcmp(argv[1], "test") == 0) {
    return test(argv[2]);
  }
  if (argc >= 12 && strcmp(argv[1], "convert") == 0) {
    return convert(argv + 2, argv[10], argv + 11, argc - 11);
  }
  fprintf(stderr,
          "usage: capture_tool start DRIVER.sys | stop | test OUT |\n"
          "  convert WIDTH HEIGHT STRIDE PICTURE DECIMATION QUALITY H_MIRROR V_MIRROR OUT RAW...\n"
          "PICTURE: 0 I420, 1 YUYV, 2 UYVY, 3 RGB24, 4 RGB32\n");
  return 2;
}
