# fish completion for quilo
set -l commands icns info extract set-icon remove-icon get-icon copy-icon paste-icon create-thumbnails restore-thumbnails save-as-icns request install-file-manager-actions uninstall-file-manager-actions
complete -c quilo -n "not __fish_seen_subcommand_from $commands" -f -a "$commands"
complete -c quilo -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version'
complete -c quilo -l help -d 'Describe the command'
complete -c quilo -n "__fish_seen_subcommand_from icns extract save-as-icns" -l output -r -a '(__fish_complete_directories)' -d 'Folder to write into'
complete -c quilo -n "__fish_seen_subcommand_from icns" -l interpolation -x -a 'high low none default'
complete -c quilo -n "__fish_seen_subcommand_from icns" -l jobs -x -d 'Pictures worked on at once'
complete -c quilo -n "__fish_seen_subcommand_from set-icon" -l compatibility -d 'Also the Mac OS 9 resources'
complete -c quilo -n "__fish_seen_subcommand_from create-thumbnails restore-thumbnails save-as-icns" -l keep-dates -d 'Put modification dates back'
complete -c quilo -n "__fish_seen_subcommand_from create-thumbnails restore-thumbnails save-as-icns" -l no-keep-dates -d 'Leave modification dates changed'
complete -c quilo -n "__fish_seen_subcommand_from request; and not __fish_seen_subcommand_from create-thumbnails restore-thumbnails save-as-icns" -f -a 'create-thumbnails restore-thumbnails save-as-icns'
complete -c quilo -n "__fish_seen_subcommand_from install-file-manager-actions uninstall-file-manager-actions" -l for -x -a 'all nautilus nemo caja dolphin thunar'
