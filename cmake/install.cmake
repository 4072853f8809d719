# The install tree is the folder that the program runs from.
install(TARGETS velatra velatra-standin velatra-tool RUNTIME DESTINATION .)
install(DIRECTORY docs input DESTINATION .)
install(DIRECTORY data/world DESTINATION data)
install(FILES data/airports_p3d.xml DESTINATION .)
