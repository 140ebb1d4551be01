# Run by cpack on what it has gathered: everybody may look into the directories, whatever the umask of who packs.
file(CHMOD_RECURSE ${CPACK_TEMPORARY_DIRECTORY}
     DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
