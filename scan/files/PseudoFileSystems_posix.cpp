#include "scan/files/PseudoFileSystems_posix.h"

#include <linux/magic.h>

namespace Vantrel::Enumerators {

bool IsPseudoFileSystem(uint64_t pMagic) {
  switch (pMagic) {
    case PROC_SUPER_MAGIC:
    case SYSFS_MAGIC:
    case CGROUP_SUPER_MAGIC:
    case CGROUP2_SUPER_MAGIC:
    case DEVPTS_SUPER_MAGIC:
    case DEBUGFS_MAGIC:
    case TRACEFS_MAGIC:
    case SECURITYFS_MAGIC:
    case SELINUX_MAGIC:
    case SMACK_MAGIC:
    case BPF_FS_MAGIC:
    case PSTOREFS_MAGIC:
    case EFIVARFS_MAGIC:
    case HUGETLBFS_MAGIC:
    case BINFMTFS_MAGIC:
    case NSFS_MAGIC:
    case RDTGROUP_SUPER_MAGIC:
    case AUTOFS_SUPER_MAGIC:  // listing it would mount the file system behind it
    case 0x19800202:          // message queues
    case 0x62656570:          // configfs
    case 0x65735543:          // the control file system of fuse
      return true;
    default:
      return false;
  }
}

}  // namespace Vantrel::Enumerators
