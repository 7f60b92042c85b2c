/* a
bc
 */x
