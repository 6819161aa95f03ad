# cmake -DLUPDATE=... -DSOURCE=... -DOUT=... -P CheckTranslationTemplate.cmake
# Gathers the template as the vantle_translation_template target does and fails when texts the
# user sees (settings window, menu, removal sheet, countdowns, command line) did not reach it
# (a text left out of tr(), a broken lupdate).
execute_process(
  COMMAND "${LUPDATE}" -silent -locations none -extensions cpp,h "${SOURCE}" -ts "${OUT}"
  RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "lupdate failed (${result})")
endif()
file(READ "${OUT}" template)
foreach(text
    "<source>Vantle Settings</source>"
    "<source>Auto-Quit</source>"
    "<source>Launch Vantle at login</source>"
    "<source>Protect tray-only apps from auto-quit</source>"
    "<source>Protect menu bar apps from auto-quit</source>"
    "<source>Excluded apps are never quit by the system idle feature.</source>"
    "<source>Exclude</source>"
    "<source>Quit Vantle</source>"
    "<source>App control for your system tray</source>"
    "<source>Remove Vantle?</source>"
    "<source>Quitting Idle Apps</source>"
    "<source>Quit All Apps</source>"
    "<source>Print the running applications as Vantle sees them and exit.</source>")
  string(FIND "${template}" "${text}" at)
  if(at LESS 0)
    message(FATAL_ERROR "the translation template lacks ${text}")
  endif()
endforeach()
