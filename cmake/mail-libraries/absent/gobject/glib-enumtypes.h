/* In place of a generated header: GObject's types of GLib's enumerations for Unicode, which GMime does not use. */
