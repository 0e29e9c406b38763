# The dialog's pictures are laid into dialog_images.cpp by the assembler, which the
# build tool cannot see: say that its object depends on them.
file(GLOB dialog_artwork CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/engine/shell/artwork/*.bmp)
set_source_files_properties(${CMAKE_SOURCE_DIR}/src/engine/shell/dialog_images.cpp
  PROPERTIES OBJECT_DEPENDS "${dialog_artwork}")
